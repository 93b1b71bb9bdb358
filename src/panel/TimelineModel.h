#pragma once

#include "core/Clock.h"
#include "playback/PlayerState.h"

#include <QObject>
#include <QPointer>
#include <optional>

namespace MirlPlayer {

// What every timeline does, whatever its style draws: shows the clock's position as a fraction
// of the duration, or while the pointer drags, the fraction under it; seeks on release. With no
// duration the bar stays empty and a drag seeks nowhere.
class TimelineModel : public QObject {
    Q_OBJECT
    Q_PROPERTY(MirlPlayer::PlayerState* player READ player WRITE setPlayer NOTIFY playerChanged)
    Q_PROPERTY(double fraction READ fraction NOTIFY changed)
    Q_PROPERTY(bool dragging READ dragging NOTIFY changed)
    Q_PROPERTY(bool enabled READ enabled NOTIFY changed)
    Q_PROPERTY(QString elapsedText READ elapsedText NOTIFY changed)
    Q_PROPERTY(QString remainingText READ remainingText NOTIFY changed)
    Q_PROPERTY(QString durationText READ durationText NOTIFY changed)
    // The bar is on screen: only then does the player's clock need to move on its own.
    Q_PROPERTY(bool shown READ shown WRITE setShown NOTIFY shownChanged)
public:
    using QObject::QObject;
    ~TimelineModel() override;

    PlayerState* player() const { return m_player; }
    void setPlayer(PlayerState* player);
    bool shown() const { return m_shown; }
    void setShown(bool shown);

    double fraction() const;
    bool dragging() const { return m_dragFrac.has_value(); }
    bool enabled() const;
    QString elapsedText() const;
    QString remainingText() const;
    QString durationText() const;

    // The pointer at `x` over a bar `width` wide, pressed or moving while pressed.
    Q_INVOKABLE void drag(double x, double width);
    // The press ends: seek to the dragged fraction.
    Q_INVOKABLE void release();
    // The press is taken away (the card closed under it): no seek.
    Q_INVOKABLE void cancel();

    // The clock that tells whether the music's levels are arriving (tests set their own).
    void setClock(const Clock& clock) { m_clock = &clock; }

Q_SIGNALS:
    void playerChanged();
    void changed();
    void shownChanged();

private:
    double duration() const;
    double shownSeconds() const;

    QPointer<PlayerState> m_player;
    std::optional<double> m_dragFrac;
    bool m_shown = false;
    const Clock* m_clock = &Clock::system();
    double m_levelsAt = Clock::distantPast; // when the player's levels last arrived
    bool m_positionHeld = false;            // a position waits for the next levels
};

} // namespace MirlPlayer
