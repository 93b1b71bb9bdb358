#include "panel/SurfaceSlots.h"

#include "panel/logic/NotchLayout.h"

#include <algorithm>

namespace MirlPlayer {

namespace {

using Arrangement = SurfaceSlots::Arrangement;
using Slot = SurfaceSlots::Slot;

// The places, shape-relative, inside the card's padding of 18 left and right and 12 above and
// below. Resting pill 66 x 24: the indicator's 20 x 11 box in the middle. Artwork card 248 x 336:
// one column, spacing 10. Visualizer card 580 x 168: art, the title block over the timeline and
// transport, the visualizer; spacing 8. Library 640 wide: the header bar of 84 along the top.
constexpr QRectF pillArt{23, 6.5, 20, 11};
constexpr std::array<QRectF, SurfaceSlots::slotCount> artworkCard{{
    {34, 12, 180, 180},
    {18, 202, 212, 42},
    {18, 254, 212, 26},
    {18, 290, 212, 34},
    {124, 102, 0, 0},
}};
constexpr std::array<QRectF, SurfaceSlots::slotCount> visualizerCard{{
    {18, 24, 120, 120},
    {146, 24, 230, 38},
    {146, 70, 230, 26},
    {146, 104, 230, 40},
    {384, 24, 178, 120},
}};
constexpr std::array<QRectF, SurfaceSlots::slotCount> libraryBar{{
    {18, 12, 60, 60},
    {88, 16, 214, 40},
    {312, 29, 160, 26},
    {480, 18, 142, 40},
    {48, 42, 0, 0},
}};

} // namespace

SurfaceSlots::SurfaceSlots(Clock& clock, QObject* parent)
    : QObject(parent)
    , m_clock(clock) {
    m_timer.setInterval(16);
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, &SurfaceSlots::advance);
    for (int s = 0; s < slotCount; ++s) {
        m_drawn[size_t(s)] = slotRect(m_arrangement, Slot(s));
        const QRectF r = m_drawn[size_t(s)];
        const std::array<double, 4> v{r.x(), r.y(), r.width(), r.height()};
        for (size_t i = 0; i < 4; ++i)
            m_axes[size_t(s)][i].jump(v[i]);
    }
    m_corner.jump(artCorner(m_arrangement));
}

QRectF SurfaceSlots::slotRect(Arrangement arrangement, Slot slot) {
    const auto i = size_t(slot);
    switch (arrangement) {
    case Arrangement::pill:
        if (slot == Slot::art)
            return pillArt;
        return {pillArt.center(), QSizeF(0, 0)};
    case Arrangement::artwork:
        return artworkCard[i];
    case Arrangement::visualizer:
        return visualizerCard[i];
    case Arrangement::library:
        return libraryBar[i];
    }
    return {};
}

double SurfaceSlots::artCorner(Arrangement arrangement) {
    switch (arrangement) {
    case Arrangement::pill:
        return 3;
    case Arrangement::artwork:
        return 16;
    case Arrangement::visualizer:
        return 14;
    case Arrangement::library:
        return 10;
    }
    return 0;
}

QString SurfaceSlots::slotName(Arrangement arrangement, Slot slot) {
    static const char* const names[] = {"art", "title", "timeline", "transport", "visualizer"};
    const QString piece = QString::fromLatin1(names[int(slot)]);
    switch (arrangement) {
    case Arrangement::pill:
        return slot == Slot::art ? piece : QString();
    case Arrangement::library:
        return QStringLiteral("bar.") + piece;
    default:
        return QStringLiteral("card.") + piece;
    }
}

QRectF SurfaceSlots::interpolate(const QRectF& a, const QRectF& b, double p) {
    auto mix = [p](double x, double y) { return x + (y - x) * p; };
    return {mix(a.x(), b.x()), mix(a.y(), b.y()), std::max(0.0, mix(a.width(), b.width())),
            std::max(0.0, mix(a.height(), b.height()))};
}

QString SurfaceSlots::arrangementName() const {
    static const char* const names[] = {"pill", "artwork", "visualizer", "library"};
    return QString::fromLatin1(names[int(m_arrangement)]);
}

void SurfaceSlots::setArrangementName(const QString& name) {
    for (Arrangement a :
         {Arrangement::pill, Arrangement::artwork, Arrangement::visualizer, Arrangement::library}) {
        if (name == QLatin1String(std::array{"pill", "artwork", "visualizer", "library"}[int(a)]))
            setArrangement(a);
    }
}

void SurfaceSlots::setLayout(NotchLayout* layout) {
    if (m_layout == layout)
        return;
    m_layout = layout;
    Q_EMIT layoutChanged();
}

Spring SurfaceSlots::springFor(Arrangement from, Arrangement to) const {
    const double m = std::clamp(m_motionSpeed, 0.5, 2.0);
    // Switching the visualizer on or off re-lays the open card with a spring of its own.
    const bool cardSwap = (from == Arrangement::artwork && to == Arrangement::visualizer) ||
                          (from == Arrangement::visualizer && to == Arrangement::artwork);
    if (cardSwap)
        return {0.3 / m, 1, 0};
    // Otherwise the pieces move with the shape: the spring the panel last moved it with.
    if (m_layout && m_layout->motion())
        return *m_layout->motion();
    return {0.4 / m, 0.82, 0};
}

void SurfaceSlots::setArrangement(Arrangement arrangement) {
    if (arrangement == m_arrangement)
        return;
    const Spring spring = springFor(m_arrangement, arrangement);
    m_arrangement = arrangement;
    const double now = m_clock.now();
    for (int s = 0; s < slotCount; ++s) {
        const QRectF r = slotRect(arrangement, Slot(s));
        const std::array<double, 4> v{r.x(), r.y(), r.width(), r.height()};
        for (size_t i = 0; i < 4; ++i)
            m_axes[size_t(s)][i].retarget(v[i], spring, now);
    }
    m_corner.retarget(artCorner(arrangement), spring, now);
    Q_EMIT arrangementChanged();
    if (!m_timer.isActive())
        m_timer.start();
    advance();
}

void SurfaceSlots::advance() {
    const double now = m_clock.now();
    bool settled = m_corner.settled(now);
    for (int s = 0; s < slotCount; ++s) {
        auto& a = m_axes[size_t(s)];
        m_drawn[size_t(s)] = QRectF(a[0].value(now), a[1].value(now),
                                    std::max(0.0, a[2].value(now)), std::max(0.0, a[3].value(now)));
        for (const SpringAxis& axis : a)
            settled = settled && axis.settled(now);
    }
    if (settled) {
        for (int s = 0; s < slotCount; ++s)
            m_drawn[size_t(s)] = slotRect(m_arrangement, Slot(s));
        m_timer.stop();
    }
    Q_EMIT changed();
}

} // namespace MirlPlayer
