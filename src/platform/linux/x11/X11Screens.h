#pragma once

#include "platform/ScreenInfo.h"

#include <QObject>
#include <optional>

class QScreen;

namespace MirlPlayer {

// Flips between Qt's top-left global coordinates and the panel's bottom-left screen points,
// whose origin is the bottom-left corner of the primary screen.
struct ScreenFlip {
    double primaryBottom = 0; // the primary screen's bottom edge in top-left coordinates
    static ScreenFlip current();
    // Device pixels per point, for values read from the X server (which counts pixels).
    static double pixelRatio();
    QRectF toBottomLeft(const QRectF& topLeftRect) const {
        return {topLeftRect.x(), primaryBottom - topLeftRect.y() - topLeftRect.height(),
                topLeftRect.width(), topLeftRect.height()};
    }
    QRectF toTopLeft(const QRectF& bottomLeftRect) const { return toBottomLeft(bottomLeftRect); }
    QPointF toBottomLeft(QPointF p) const { return {p.x(), primaryBottom - p.y()}; }
};

// Screens from QScreen. No Linux API tells of a camera housing, so insets stay 0 and the
// panel lays itself out around its fallback notch. Changes of the screen set or geometry, and
// the end of a system sleep (logind's PrepareForSleep(false)), are announced.
class QtScreenInfo : public QObject, public ScreenInfo {
    Q_OBJECT
public:
    explicit QtScreenInfo(QObject* parent = nullptr);

    QList<ScreenDescription> screens() override;
    std::optional<ScreenDescription> mainScreen() override;

private Q_SLOTS:
    void prepareForSleep(bool sleeping);

private:
    void watch(QScreen* screen);
    void changed();
    const QList<ScreenDescription>& described();
    static ScreenDescription describe(QScreen* screen, const ScreenFlip& flip);

    std::optional<QList<ScreenDescription>> m_cache;
};

} // namespace MirlPlayer
