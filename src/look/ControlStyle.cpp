#include "look/ControlStyle.h"

#include <QHash>

namespace MirlPlayer {

QVariantMap ControlStyle::toMap() const {
    return {
        {QStringLiteral("id"), rawValue(style)},    {QStringLiteral("timeline"), timeline},
        {QStringLiteral("piece"), piece},           {QStringLiteral("chip"), chip},
        {QStringLiteral("chipRadius"), chipRadius}, {QStringLiteral("symbolWeight"), symbolWeight},
        {QStringLiteral("hoverScale"), hoverScale}, {QStringLiteral("showsTimes"), showsTimes},
        {QStringLiteral("monospace"), monospace},   {QStringLiteral("tint"), tint}};
}

ControlStyle controlStyle(PlayerStyle style) {
    ControlStyle c;
    c.style = style;
    switch (style) {
    case PlayerStyle::retro:
        c.timeline = QStringLiteral("retro");
        c.piece = QStringLiteral("pixel");
        c.hoverScale = 1.12;
        c.monospace = true;
        c.tint = QStringLiteral("#9be36b");
        break;
    case PlayerStyle::modern:
        c.timeline = QStringLiteral("modern");
        c.piece = QStringLiteral("circle");
        c.hoverScale = 1.08;
        break;
    case PlayerStyle::apple:
        c.timeline = QStringLiteral("apple");
        c.piece = QStringLiteral("symbol");
        c.hoverScale = 1.1;
        break;
    case PlayerStyle::vintage:
        c.timeline = QStringLiteral("vintage");
        c.piece = QStringLiteral("chip");
        c.chip = QStringLiteral("rounded");
        c.chipRadius = 4;
        c.hoverScale = 1.05;
        c.tint = QStringLiteral("#e8c98a");
        break;
    case PlayerStyle::pioneer:
        c.timeline = QStringLiteral("pioneer");
        c.piece = QStringLiteral("chip");
        c.chip = QStringLiteral("rounded");
        c.chipRadius = 3;
        c.hoverScale = 1.05;
        c.monospace = true;
        c.tint = QStringLiteral("#ffb23e");
        break;
    case PlayerStyle::cassette:
        c.timeline = QStringLiteral("cassette");
        c.piece = QStringLiteral("designer");
        c.chip = QStringLiteral("rounded");
        c.chipRadius = 2;
        c.hoverScale = 1.06;
        c.showsTimes = false;
        break;
    case PlayerStyle::noir:
        c.timeline = QStringLiteral("designer");
        c.piece = QStringLiteral("designer");
        c.chip = QStringLiteral("rounded");
        c.chipRadius = 2;
        c.hoverScale = 1.06;
        c.tint = QStringLiteral("#ff3fa4");
        break;
    case PlayerStyle::cyber:
        c.timeline = QStringLiteral("designer");
        c.piece = QStringLiteral("designer");
        c.chip = QStringLiteral("cutCorner");
        c.hoverScale = 1.06;
        c.monospace = true;
        c.tint = QStringLiteral("#27f2e0");
        break;
    case PlayerStyle::minimal:
        c.timeline = QStringLiteral("modern");
        c.piece = QStringLiteral("designer");
        c.symbolWeight = QStringLiteral("ultraLight");
        c.hoverScale = 1.06;
        c.showsTimes = false;
        break;
    case PlayerStyle::studio:
        c.timeline = QStringLiteral("designer");
        c.piece = QStringLiteral("designer");
        c.chip = QStringLiteral("rounded");
        c.chipRadius = 5;
        c.hoverScale = 1.06;
        c.tint = QStringLiteral("#ff6a3d");
        break;
    }
    return c;
}

ControlStyle controlStyle(const QString& styleID) {
    return controlStyle(playerStyle(styleID).value_or(PlayerStyle::apple));
}

QList<int> pixelGlyph(const QString& name) {
    static const QHash<QString, QList<const char*>> rows = {
        {QStringLiteral("play"),
         {"1000000", "1110000", "1111100", "1111111", "1111100", "1110000", "1000000"}},
        {QStringLiteral("pause"),
         {"0110110", "0110110", "0110110", "0110110", "0110110", "0110110", "0110110"}},
        {QStringLiteral("next"),
         {"1001000", "1101100", "1111110", "1111111", "1111110", "1101100", "1001000"}},
        {QStringLiteral("prev"),
         {"0001001", "0011011", "0111111", "1111111", "0111111", "0011011", "0001001"}},
    };
    QList<int> bits(49, 0);
    const auto it = rows.constFind(name);
    if (it == rows.constEnd())
        return bits;
    for (int r = 0; r < 7; ++r) {
        for (int c = 0; c < 7; ++c)
            bits[r * 7 + c] = it->at(r)[c] == '1' ? 1 : 0;
    }
    return bits;
}

} // namespace MirlPlayer
