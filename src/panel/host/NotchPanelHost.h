#pragma once

#include "look/Theme.h"
#include "panel/host/RestingPillOverlay.h"
#include "panel/logic/NotchPanelController.h"
#include "panel/logic/PillMotion.h"
#include "platform/linux/wayland/PanelBackend.h"
#include "platform/linux/wayland/WindowEventPointer.h"
#include "platform/linux/x11/GnomeShellOverview.h"
#include "platform/linux/x11/X11BlurBehind.h"
#include "platform/linux/x11/X11ChangeWatch.h"
#include "platform/linux/x11/X11NotchPanel.h"
#include "platform/linux/x11/X11Pointer.h"
#include "platform/linux/x11/X11Screens.h"
#include "platform/linux/x11/X11WindowFacts.h"

#include <QObject>
#include <QRectF>
#include <QUrl>
#include <functional>
#include <memory>

class QQuickItem;
class QQmlEngine;
class QQuickView;

namespace MirlPlayer {

class ArtworkImageProvider;
class PlayerState;

// The panel as the application shows it: the panel's Qt Quick surface driven by the
// NotchPanelController over the X11 window facts. In a Wayland session (XWayland) the pointer
// comes from the window's own events instead of the root window (`PanelBackend`). The view binds to
// `expanded` and to the drawn shape of the pill (`pillRect`, `cardRect`: both the shape in force,
// in window coordinates, already animated by the panel's springs).
class NotchPanelHost : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool expanded READ expanded NOTIFY expandedChanged)
    Q_PROPERTY(QRectF pillRect READ shape NOTIFY geometryChanged)
    Q_PROPERTY(QRectF cardRect READ shape NOTIFY geometryChanged)
    Q_PROPERTY(double cornerRadius READ cornerRadius NOTIFY geometryChanged)
    Q_PROPERTY(bool libraryOpen READ libraryOpen NOTIFY libraryOpenChanged)
    Q_PROPERTY(QString artworkSource READ artworkSource NOTIFY artworkSourceChanged)
    Q_PROPERTY(MirlPlayer::NotchLayout* layout READ layout CONSTANT)
    // The shape moves with the panel's springs already; the view adds no easing of its own.
    Q_PROPERTY(bool animatesShape READ animatesShape CONSTANT)
    // The view the open library shows below its header bar; none leaves the place empty.
    Q_PROPERTY(QUrl libraryView READ libraryView CONSTANT)
    // The resting pill is shown by its own layer over the window (RestingPillOverlay): the view
    // holds its pill still beneath.
    Q_PROPERTY(bool pillOverlaid READ pillOverlaid NOTIFY pillOverlaidChanged)
public:
    NotchPanelHost(PlayerState& player, NotchPanelController::Inputs inputs,
                   NotchPanelController::Outputs outputs, Theme& theme = Theme::shared(),
                   QObject* parent = nullptr);
    ~NotchPanelHost() override;

    // Builds the view and starts the controller. False when the view could not be loaded.
    bool show();

    // Runs on the view's engine before the surface loads, for modules the surface may import.
    void setEngineSetup(std::function<void(QQmlEngine&)> setup) {
        m_engineSetup = std::move(setup);
    }
    // Before `show`: the library view's QML, from a module the engine setup made known.
    void setLibraryView(const QUrl& view) { m_libraryView = view; }
    QUrl libraryView() const { return m_libraryView; }
    QQuickView* window() const { return m_view.get(); }
    NotchPanelController& controller() { return *m_controller; }
    X11NotchPanel* panel() const { return m_panel.get(); }
    NotchLayout* layout() { return m_controller->layout(); }

    bool expanded() const { return m_controller->layout()->expanded(); }
    QRectF shape() const;
    // Room kept around the shape in the window: the shadow, and a spring's overshoot.
    static constexpr double drawnMargin = 24;
    // The same room once settled under XWayland. XWayland does not hand the X input region to
    // every compositor (wlroots' take the whole window), and a click on the window outside that
    // region is then lost: so the settled window keeps within the trigger and hold rectangles,
    // whose margins are 14 and 12, at the cost of the shadow's faint outer edge.
    static constexpr double hoverDrawnMargin = 12;
    QString artworkSource() const { return m_artworkSource; }
    bool animatesShape() const { return true; }
    double cornerRadius() const { return m_motion->cornerRadius(); }
    bool libraryOpen() const { return m_controller->layout()->libraryOpen(); }
    bool pillOverlaid() const { return m_overlay && m_overlay->covering(); }

    Q_INVOKABLE static QString formatTime(double seconds);
    // An artist or album link in the title block: opens the library on it.
    Q_INVOKABLE void openItem(const QVariantMap& item);
    // The art's tap and hover: opens or closes the library through the controller.
    Q_INVOKABLE void requestLibrary(bool open) { m_controller->setLibraryOpen(open); }

    // Shows the context menu for a right press at a global position; true when one was shown.
    // Kept across `show`.
    void setContextMenu(std::function<bool(QPoint)> menu);
    // Whether an editable text field lies under a point of the view's content (window
    // coordinates): a text input or text area that is not read-only, or inside one.
    static bool editableTextAt(QQuickItem* content, QPointF point);
    // A text input or text area, editable or not; and one that is not read-only.
    static bool isTextItem(const QQuickItem* item);
    static bool isEditableText(const QQuickItem* item);

Q_SIGNALS:
    void expandedChanged();
    void geometryChanged();
    void artworkSourceChanged();
    void libraryOpenChanged();
    void pillOverlaidChanged();

private:
    void updateArtwork();
    void updateBlur();
    void updateDrawnRect();
    void updateOverlay();

    PlayerState& m_player;
    Theme& m_theme;
    QtScreenInfo m_screens;
    X11Pointer m_pointer;
    X11WindowFacts m_windows;
    X11ChangeWatch m_watch;
    WatchedPointer m_watchedPointer{m_pointer, m_watch};
    WatchedWindowFacts m_watchedWindows{m_windows, m_watch};
    GnomeShellOverview m_overview;
    PanelBackend m_backend = PanelBackendChoice::forThisProcess().backend;
    WindowEventPointer m_windowPointer{
        [](QPointF global) { return ScreenFlip::current().toBottomLeft(global); }};
    std::unique_ptr<NotchPanelController> m_controller;
    std::unique_ptr<PillMotion> m_motion;
    std::unique_ptr<QQuickView> m_view;
    std::function<void(QQmlEngine&)> m_engineSetup;
    QUrl m_libraryView;
    std::unique_ptr<X11NotchPanel> m_panel;
    std::unique_ptr<RestingPillOverlay> m_overlay;
    X11BlurBehind m_blur;
    ArtworkImageProvider* m_artwork = nullptr; // owned by the view's engine
    int m_artworkGeneration = 0;
    QString m_artworkSource;
    std::function<bool(QPoint)> m_contextMenu;
    bool m_resigning = false;
    QRectF m_drawn;
};

} // namespace MirlPlayer
