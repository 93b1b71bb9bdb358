#include "look/Skin.h"

namespace MirlPlayer {

const QList<Skin>& skins() {
    static const QList<Skin> list = {
        {QStringLiteral("green"), QStringLiteral("Matrix"), 0.24, 0.88, 0.95},
        {QStringLiteral("lime"), QStringLiteral("Lime"), 0.28, 0.92, 1.0},
        {QStringLiteral("cyan"), QStringLiteral("Cyan"), 0.49, 0.85, 0.95},
        {QStringLiteral("sky"), QStringLiteral("Sky"), 0.55, 0.7, 1.0},
        {QStringLiteral("ocean"), QStringLiteral("Ocean"), 0.6, 0.85, 1.0},
        {QStringLiteral("violet"), QStringLiteral("Violet"), 0.75, 0.72, 1.0},
        {QStringLiteral("magenta"), QStringLiteral("Magenta"), 0.88, 0.82, 1.0},
        {QStringLiteral("rose"), QStringLiteral("Rose"), 0.95, 0.6, 1.0},
        {QStringLiteral("crimson"), QStringLiteral("Crimson"), 0.99, 0.82, 1.0},
        {QStringLiteral("sunset"), QStringLiteral("Sunset"), 0.04, 0.9, 1.0},
        {QStringLiteral("amber"), QStringLiteral("Amber"), 0.11, 0.95, 1.0},
        {QStringLiteral("gold"), QStringLiteral("Gold"), 0.14, 0.9, 1.0},
        {QStringLiteral("ice"), QStringLiteral("Ice"), 0.55, 0.22, 1.0},
    };
    return list;
}

std::optional<Skin> skinWithID(const QString& id) {
    for (const Skin& s : skins()) {
        if (s.id == id)
            return s;
    }
    return std::nullopt;
}

QString rawValue(PlayerBackground b) {
    switch (b) {
    case PlayerBackground::solid:
        return QStringLiteral("solid");
    case PlayerBackground::frosted:
        return QStringLiteral("frosted");
    case PlayerBackground::liquid:
        return QStringLiteral("liquid");
    }
    return QStringLiteral("frosted");
}

QString title(PlayerBackground b) {
    switch (b) {
    case PlayerBackground::solid:
        return QStringLiteral("Solid");
    case PlayerBackground::frosted:
        return QStringLiteral("Frosted glass");
    case PlayerBackground::liquid:
        return QStringLiteral("Liquid Glass");
    }
    return {};
}

std::optional<PlayerBackground> playerBackground(const QString& raw) {
    for (PlayerBackground b :
         {PlayerBackground::solid, PlayerBackground::frosted, PlayerBackground::liquid}) {
        if (rawValue(b) == raw)
            return b;
    }
    return std::nullopt;
}

QList<PlayerBackground> availableBackgrounds() {
    return {PlayerBackground::solid, PlayerBackground::frosted};
}

PlayerBackground effectiveBackground(const QString& raw) {
    const std::optional<PlayerBackground> b = playerBackground(raw);
    if (b && availableBackgrounds().contains(*b))
        return *b;
    return PlayerBackground::frosted;
}

QString rawValue(PillPosition p) {
    return p == PillPosition::right ? QStringLiteral("right") : QStringLiteral("notch");
}

PillPosition pillPosition(const QString& raw) {
    return raw == u"right" ? PillPosition::right : PillPosition::notch;
}

QList<PlayerStyle> allPlayerStyles() {
    return {PlayerStyle::retro,   PlayerStyle::modern,   PlayerStyle::apple, PlayerStyle::vintage,
            PlayerStyle::pioneer, PlayerStyle::cassette, PlayerStyle::noir,  PlayerStyle::cyber,
            PlayerStyle::minimal, PlayerStyle::studio};
}

QString rawValue(PlayerStyle s) {
    switch (s) {
    case PlayerStyle::retro:
        return QStringLiteral("retro");
    case PlayerStyle::modern:
        return QStringLiteral("modern");
    case PlayerStyle::apple:
        return QStringLiteral("apple");
    case PlayerStyle::vintage:
        return QStringLiteral("vintage");
    case PlayerStyle::pioneer:
        return QStringLiteral("pioneer");
    case PlayerStyle::cassette:
        return QStringLiteral("cassette");
    case PlayerStyle::noir:
        return QStringLiteral("noir");
    case PlayerStyle::cyber:
        return QStringLiteral("cyber");
    case PlayerStyle::minimal:
        return QStringLiteral("minimal");
    case PlayerStyle::studio:
        return QStringLiteral("studio");
    }
    return {};
}

QString title(PlayerStyle s) {
    switch (s) {
    case PlayerStyle::retro:
        return QStringLiteral("Retro LCD");
    case PlayerStyle::modern:
        return QStringLiteral("Modern");
    case PlayerStyle::apple:
        return QStringLiteral("Apple");
    case PlayerStyle::vintage:
        return QStringLiteral("Vintage");
    case PlayerStyle::pioneer:
        return QStringLiteral("Pioneer 2000");
    case PlayerStyle::cassette:
        return QStringLiteral("Cassette");
    case PlayerStyle::noir:
        return QStringLiteral("Neon Noir");
    case PlayerStyle::cyber:
        return QStringLiteral("Cyberdeck");
    case PlayerStyle::minimal:
        return QStringLiteral("Monoline");
    case PlayerStyle::studio:
        return QStringLiteral("Studio 80");
    }
    return {};
}

std::optional<PlayerStyle> playerStyle(const QString& raw) {
    for (PlayerStyle s : allPlayerStyles()) {
        if (rawValue(s) == raw)
            return s;
    }
    return std::nullopt;
}

} // namespace MirlPlayer
