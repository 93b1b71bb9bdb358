#include "audio/LevelsStore.h"

#include <algorithm>

namespace MirlPlayer {

LevelsStore::LevelsStore(QObject* parent)
    : QObject(parent)
    , m_levels(bandCount, startLevel) {}

void LevelsStore::setLevels(const QList<double>& levels) {
    if (levels == m_levels)
        return;
    m_levels = levels;
    Q_EMIT levelsChanged();
}

std::optional<QList<double>> LevelsStore::idleFade(const QList<double>& levels, bool needsAudio,
                                                   double secondsSinceAudio) {
    if (!needsAudio)
        return std::nullopt; // nothing consumes levels
    if (secondsSinceAudio < fadeHoldoff)
        return std::nullopt; // live data is arriving
    // A small margin above the resting level ends the fade, so it stops writing by itself.
    if (std::none_of(levels.cbegin(), levels.cend(), [](double v) { return v > 0.061; }))
        return std::nullopt;
    QList<double> faded = levels;
    for (double& v : faded)
        v += (restingLevel - v) * 0.2;
    return faded;
}

bool LevelsStore::fadeTick(bool needsAudio, double secondsSinceAudio) {
    auto faded = idleFade(m_levels, needsAudio, secondsSinceAudio);
    if (!faded)
        return false;
    setLevels(*faded);
    return true;
}

} // namespace MirlPlayer
