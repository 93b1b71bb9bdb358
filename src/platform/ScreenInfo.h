#pragma once

#include <QList>
#include <QRectF>
#include <QString>
#include <functional>
#include <optional>

namespace MirlPlayer {

// One display as the panel sees it. Rectangles are in screen points with the origin at the
// bottom left of the first (primary) screen, y growing upwards.
struct ScreenDescription {
    QString name;
    QRectF frame;
    // Positive only on a display with a camera housing cut into its top edge.
    double safeAreaTop = 0;
    // The usable menu-bar strips left and right of the housing, where the platform reports them.
    std::optional<QRectF> auxiliaryTopLeftArea;
    std::optional<QRectF> auxiliaryTopRightArea;

    bool operator==(const ScreenDescription&) const = default;
};

// The seam to the display list. The Linux implementation reads QScreen, which knows no camera
// housing, so every screen reports an inset of 0 and the panel uses its fallback notch size.
class ScreenInfo {
public:
    virtual ~ScreenInfo() = default;

    // All screens, the primary one first.
    virtual QList<ScreenDescription> screens() = 0;
    // The screen with the keyboard focus, or none when there is no screen at all.
    virtual std::optional<ScreenDescription> mainScreen() = 0;

    // Called on the GUI thread when the screen set or a screen's geometry changes, and when the
    // machine or its displays wake from sleep.
    void setChangeHandler(std::function<void()> handler) { m_handler = std::move(handler); }

protected:
    void notifyChanged() const {
        if (m_handler)
            m_handler();
    }

private:
    std::function<void()> m_handler;
};

} // namespace MirlPlayer
