#pragma once

#include <QList>
#include <QString>
#include <optional>

namespace MirlPlayer {

// The visualizer styles, in the order the style picker lists them. The id is what `vizID` stores.
enum class VizStyle {
    waterfall,
    bars,
    mirror,
    stereo,
    stereoAnalyzer,
    skyline,
    circuitry,
    silk,
    phosphor,
};

namespace VizStyles {

const QList<VizStyle>& all();
QString id(VizStyle style);
QString title(VizStyle style);
// What a screen reader says for the spectrum of this style.
QString accessibilityLabel(VizStyle style);
// The keys of the sliders that tune this style, in the order Settings shows them.
const QList<QString>& controlKeys(VizStyle style);
// The style for a stored id; nothing for an unknown id.
std::optional<VizStyle> fromID(const QString& id);

} // namespace VizStyles

} // namespace MirlPlayer
