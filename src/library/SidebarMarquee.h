#pragma once

#include "core/Clock.h"
#include "library/ScrollEdges.h"

#include <QObject>
#include <QTimer>
#include <QtQml/qqmlregistration.h>

namespace MirlPlayer {

// A sidebar name too long for its row glides while the row is hovered: it eases into motion,
// runs at a steady speed wrapping round, and eases to a stop when the hover ends, after which the
// plain text returns. A name that fits never moves, and nothing ticks while nothing moves.
class SidebarMarquee : public QObject {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(bool active READ active WRITE setActive NOTIFY activeChanged)
    Q_PROPERTY(double textWidth MEMBER m_textWidth WRITE setTextWidth NOTIFY layoutChanged)
    Q_PROPERTY(double width MEMBER m_width WRITE setWidth NOTIFY layoutChanged)
    Q_PROPERTY(bool reduceMotion MEMBER m_reduceMotion NOTIFY layoutChanged)
    Q_PROPERTY(bool gliding READ gliding NOTIFY glidingChanged)
    Q_PROPERTY(double offset READ offset NOTIFY offsetChanged)
    Q_PROPERTY(double stride READ stride NOTIFY layoutChanged)
    // The edge fade's width as a fraction of the row (7 points, at most half).
    Q_PROPERTY(double edge READ edge NOTIFY layoutChanged)

public:
    explicit SidebarMarquee(QObject* parent = nullptr);
    explicit SidebarMarquee(Clock& clock, QObject* parent = nullptr);

    bool active() const { return m_active; }
    void setActive(bool active);
    void setTextWidth(double width);
    void setWidth(double width);
    bool gliding() const { return m_gliding; }
    double offset() const { return m_offset; }
    double stride() const { return SidebarMarqueeMotion::stride(m_textWidth); }
    double edge() const;
    bool fits() const { return m_textWidth <= m_width; }

    // One frame of the glide; the timer calls it.
    void tick();

Q_SIGNALS:
    void activeChanged();
    void layoutChanged();
    void glidingChanged();
    void offsetChanged();

private:
    void reset();
    void setGliding(bool gliding);

    Clock& m_clock;
    bool m_active = false;
    double m_textWidth = 0;
    double m_width = 0;
    bool m_reduceMotion = false;
    bool m_gliding = false;
    double m_offset = 0;
    SidebarMarqueeMotion m_motion;
    QTimer m_frame;
};

} // namespace MirlPlayer
