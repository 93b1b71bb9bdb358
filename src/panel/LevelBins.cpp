#include "panel/LevelBins.h"

#include "audio/LevelsStore.h"

#include <algorithm>

namespace MirlPlayer {

QList<double> LevelBins::fold(const QList<double>& levels, int count) {
    QList<double> out(std::max(count, 0), 0.0);
    const qsizetype n = levels.size();
    const qsizetype group = std::max<qsizetype>(1, n / std::max(count, 1));
    for (int i = 0; i < count; ++i) {
        const qsizetype end = std::min(n, (i + 1) * group);
        for (qsizetype j = i * group; j < end; ++j)
            out[i] = std::max(out[i], levels[j]);
    }
    return out;
}

void LevelBins::setCount(int count) {
    if (count == m_count)
        return;
    m_count = count;
    Q_EMIT countChanged();
    refresh();
}

void LevelBins::setStore(LevelsStore* store) {
    if (store == m_store)
        return;
    if (m_store)
        disconnect(m_store, nullptr, this, nullptr);
    m_store = store;
    if (store)
        connect(store, &LevelsStore::levelsChanged, this, &LevelBins::refresh);
    Q_EMIT storeChanged();
    refresh();
}

void LevelBins::setActive(bool active) {
    if (active == m_active)
        return;
    m_active = active;
    Q_EMIT activeChanged();
    refresh();
}

void LevelBins::refresh() {
    if (!m_active)
        return;
    QList<double> next = fold(m_store ? m_store->levels() : QList<double>(), m_count);
    if (next == m_levels)
        return;
    m_levels = std::move(next);
    Q_EMIT levelsChanged();
}

} // namespace MirlPlayer
