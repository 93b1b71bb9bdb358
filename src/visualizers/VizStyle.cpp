#include "visualizers/VizStyle.h"

#include <array>

namespace MirlPlayer::VizStyles {

namespace {

struct StyleInfo {
    VizStyle style;
    const char* id;
    const char* title;
    QList<QString> keys;
};

const std::array<StyleInfo, 9>& table() {
    static const std::array<StyleInfo, 9> styles{{
        {VizStyle::waterfall,
         "waterfall",
         "3D Waterfall",
         {"waterGlow", "waterHeight", "waterDepth"}},
        {VizStyle::bars, "bars", "Bars", {"barsWidth", "barsRound"}},
        {VizStyle::mirror, "mirror", "Mirror", {"mirrorWidth", "mirrorHeight"}},
        {VizStyle::stereo, "stereo", "Stereo 3D", {"stereoHeight", "stereoDepth"}},
        {VizStyle::stereoAnalyzer,
         "stereoAnalyzer",
         "Stereo 3D Analyzer",
         {"anaSens", "anaDepth", "anaBloom", "anaGrid", "anaWidth", "anaHeight"}},
        {VizStyle::skyline, "skyline", "Neon Skyline", {"designHeight"}},
        {VizStyle::circuitry, "circuitry", "Cyber Grid", {"designHeight"}},
        {VizStyle::silk, "silk", "Silk", {"designHeight"}},
        {VizStyle::phosphor, "phosphor", "Phosphor", {"designHeight"}},
    }};
    return styles;
}

const StyleInfo& info(VizStyle style) {
    return table()[static_cast<size_t>(style)];
}

} // namespace

const QList<VizStyle>& all() {
    static const QList<VizStyle> styles = [] {
        QList<VizStyle> list;
        for (const StyleInfo& s : table())
            list.append(s.style);
        return list;
    }();
    return styles;
}

QString id(VizStyle style) {
    return QString::fromLatin1(info(style).id);
}

QString title(VizStyle style) {
    return QString::fromUtf8(info(style).title);
}

QString accessibilityLabel(VizStyle style) {
    return title(style) + QStringLiteral(" audio spectrum");
}

const QList<QString>& controlKeys(VizStyle style) {
    return info(style).keys;
}

std::optional<VizStyle> fromID(const QString& id) {
    for (const StyleInfo& s : table()) {
        if (id == QLatin1String(s.id))
            return s.style;
    }
    return std::nullopt;
}

} // namespace MirlPlayer::VizStyles
