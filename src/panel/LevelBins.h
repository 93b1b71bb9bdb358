#pragma once

#include "audio/LevelsStore.h"

#include <QList>
#include <QObject>
#include <QPointer>

namespace MirlPlayer {

// The band levels folded into `count` bars for the simple bar views: each bar is the loudest band
// of its group, low notes first. Follows the store only while `active`, so a hidden view costs
// nothing.
class LevelBins : public QObject {
    Q_OBJECT
    Q_PROPERTY(int count READ count WRITE setCount NOTIFY countChanged)
    Q_PROPERTY(MirlPlayer::LevelsStore* store READ store WRITE setStore NOTIFY storeChanged)
    Q_PROPERTY(bool active READ active WRITE setActive NOTIFY activeChanged)
    Q_PROPERTY(QList<double> levels READ levels NOTIFY levelsChanged)
public:
    using QObject::QObject;

    static QList<double> fold(const QList<double>& levels, int count);

    int count() const { return m_count; }
    void setCount(int count);
    LevelsStore* store() const { return m_store; }
    void setStore(LevelsStore* store);
    bool active() const { return m_active; }
    void setActive(bool active);
    QList<double> levels() const { return m_levels; }

Q_SIGNALS:
    void countChanged();
    void storeChanged();
    void activeChanged();
    void levelsChanged();

private:
    void refresh();

    int m_count = 0;
    QPointer<LevelsStore> m_store;
    bool m_active = true;
    QList<double> m_levels;
};

} // namespace MirlPlayer
