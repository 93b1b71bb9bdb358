#pragma once

#include <QObject>

namespace MirlPlayer {

// The interpolated playback position, published apart from PlayerState so that six updates a
// second reach only the views that show time.
class PlaybackClock : public QObject {
    Q_OBJECT
    Q_PROPERTY(double position READ position NOTIFY positionChanged)
public:
    using QObject::QObject;
    double position() const { return m_position; }
    void setPosition(double seconds);

Q_SIGNALS:
    void positionChanged();

private:
    double m_position = 0;
};

} // namespace MirlPlayer
