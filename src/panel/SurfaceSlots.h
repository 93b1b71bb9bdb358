#pragma once

#include "core/Clock.h"
#include "panel/logic/NotchLayout.h"
#include "panel/logic/Spring.h"

#include <QObject>
#include <QPointer>
#include <QRectF>
#include <QTimer>
#include <array>

namespace MirlPlayer {

// The named places of the surface that the moving pieces glide between: the art, the title
// block, the timeline, the transport and the visualizer. Each arrangement of the shape (resting
// pill, the card's two layouts, the library's header bar) puts them somewhere; when the
// arrangement changes, each piece's rectangle springs from where it is drawn to its new place,
// with the same spring as the shape, so the pill, the card and the library read as one surface.
// Rectangles are in the shape's own coordinates.
class SurfaceSlots : public QObject {
    Q_OBJECT
    Q_PROPERTY(
        QString arrangement READ arrangementName WRITE setArrangementName NOTIFY arrangementChanged)
    Q_PROPERTY(MirlPlayer::NotchLayout* layout READ layout WRITE setLayout NOTIFY layoutChanged)
    Q_PROPERTY(double motionSpeed MEMBER m_motionSpeed NOTIFY layoutChanged)
    Q_PROPERTY(QRectF art READ art NOTIFY changed)
    Q_PROPERTY(QRectF title READ title NOTIFY changed)
    Q_PROPERTY(QRectF timeline READ timeline NOTIFY changed)
    Q_PROPERTY(QRectF transport READ transport NOTIFY changed)
    Q_PROPERTY(QRectF visualizer READ visualizer NOTIFY changed)
    Q_PROPERTY(double artCorner READ artCorner NOTIFY changed)
public:
    enum class Arrangement { pill, artwork, visualizer, library };
    enum class Slot { art, title, timeline, transport, visualizer };
    static constexpr int slotCount = 5;

    explicit SurfaceSlots(Clock& clock = Clock::system(), QObject* parent = nullptr);

    // Where a slot lies in an arrangement; a piece the arrangement does not show shrinks to
    // nothing at the centre of the art's place.
    static QRectF slotRect(Arrangement arrangement, Slot slot);
    static double artCorner(Arrangement arrangement);
    // The identifier of a slot in an arrangement: "art" in the pill, "card.art", "bar.title"...
    static QString slotName(Arrangement arrangement, Slot slot);
    // The rectangle `p` of the way from `a` to `b` (p may pass 1 while a spring overshoots).
    static QRectF interpolate(const QRectF& a, const QRectF& b, double p);

    Arrangement arrangement() const { return m_arrangement; }
    void setArrangement(Arrangement arrangement);
    QString arrangementName() const;
    void setArrangementName(const QString& name);
    NotchLayout* layout() const { return m_layout; }
    void setLayout(NotchLayout* layout);

    QRectF drawn(Slot slot) const { return m_drawn[size_t(slot)]; }
    QRectF art() const { return drawn(Slot::art); }
    QRectF title() const { return drawn(Slot::title); }
    QRectF timeline() const { return drawn(Slot::timeline); }
    QRectF transport() const { return drawn(Slot::transport); }
    QRectF visualizer() const { return drawn(Slot::visualizer); }
    double artCorner() const { return m_corner.value(m_clock.now()); }
    bool moving() const { return m_timer.isActive(); }

    // Recomputes the drawn rectangles for the clock's time; the frame timer calls it.
    void advance();

Q_SIGNALS:
    void arrangementChanged();
    void layoutChanged();
    void changed();

private:
    Spring springFor(Arrangement from, Arrangement to) const;

    Clock& m_clock;
    QPointer<NotchLayout> m_layout;
    double m_motionSpeed = 1.0;
    Arrangement m_arrangement = Arrangement::pill;
    std::array<std::array<SpringAxis, 4>, slotCount> m_axes;
    std::array<QRectF, slotCount> m_drawn;
    SpringAxis m_corner;
    QTimer m_timer;
};

} // namespace MirlPlayer
