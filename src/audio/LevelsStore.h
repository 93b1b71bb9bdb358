#pragma once

#include <QList>
#include <QObject>
#include <optional>

namespace MirlPlayer {

// The band levels that views read: 128 values in 0...1, updated at most 30 times a second from
// the audio engine, and faded to a faint resting shape when the audio stops.
class LevelsStore : public QObject {
    Q_OBJECT
    Q_PROPERTY(QList<double> levels READ levels WRITE setLevels NOTIFY levelsChanged)
public:
    static constexpr int bandCount = 128;
    static constexpr double startLevel = 0.05;
    static constexpr double restingLevel = 0.06;
    // Live audio keeps the fade away for this long after a delivery.
    static constexpr double fadeHoldoff = 0.4;

    explicit LevelsStore(QObject* parent = nullptr);

    const QList<double>& levels() const { return m_levels; }
    void setLevels(const QList<double>& levels);

    // One tick of the idle fade (every 1/30 s): nothing while nobody shows levels, while live
    // audio arrived in the last 0.4 s, or once every band has settled. Otherwise each band moves
    // a fifth of the way towards the resting level. Returns whether the levels were written.
    bool fadeTick(bool needsAudio, double secondsSinceAudio);
    // The same rule as a pure function: the faded levels, or nothing when they stay as they are.
    static std::optional<QList<double>> idleFade(const QList<double>& levels, bool needsAudio,
                                                 double secondsSinceAudio);

Q_SIGNALS:
    void levelsChanged();

private:
    QList<double> m_levels;
};

} // namespace MirlPlayer
