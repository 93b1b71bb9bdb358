#include "panel/host/NotchPanelHost.h"

#include "library/SpotifyBrowser.h"
#include "look/PlayerBackdrop.h"
#include "panel/PanelView.h"
#include "panel/SurfaceGeometry.h"
#include "platform/linux/x11/X11PillLayer.h"
#include "playback/PlayerState.h"

#include <QGuiApplication>

#include <QLoggingCategory>
#include <QQmlEngine>
#include <QQuickGraphicsConfiguration>
#include <QQuickItem>
#include <QQuickView>
#include <QScopedValueRollback>
#include <QSurfaceFormat>

Q_LOGGING_CATEGORY(lcPanelHost, "mirl.panel.host")

namespace MirlPlayer {

NotchPanelHost::NotchPanelHost(PlayerState& player, NotchPanelController::Inputs inputs,
                               NotchPanelController::Outputs outputs, Theme& theme, QObject* parent)
    : QObject(parent)
    , m_player(player)
    , m_theme(theme) {
    m_windows.setOverviewSource([this] { return m_overview.active(); });
    m_watchedWindows.setExtraState([this] { return m_overview.active(); });
    m_windows.setNewClientHook([this](quint32 client) { m_watch.watchWindow(client); });
    // The tick reads the pointer and the window list through the watch: no round trip to the X
    // server while it has reported nothing new.
    Pointer& pointer = m_backend == PanelBackend::xwayland
                           ? static_cast<Pointer&>(m_windowPointer)
                           : static_cast<Pointer&>(m_watchedPointer);
    m_controller = std::make_unique<NotchPanelController>(Clock::system(), m_screens, pointer,
                                                          m_watchedWindows, std::move(inputs),
                                                          std::move(outputs));
    m_motion = std::make_unique<PillMotion>(*m_controller->layout());
    connect(m_motion.get(), &PillMotion::changed, this, &NotchPanelHost::geometryChanged);
    connect(m_motion.get(), &PillMotion::changed, this, &NotchPanelHost::updateDrawnRect);
    connect(m_motion.get(), &PillMotion::movingChanged, this, &NotchPanelHost::updateDrawnRect);
    connect(m_motion.get(), &PillMotion::changed, this, &NotchPanelHost::updateBlur);
    connect(&m_theme, &Theme::effectiveBackgroundChanged, this, &NotchPanelHost::updateBlur);
    connect(m_controller->layout(), &NotchLayout::libraryOpenChanged, this,
            &NotchPanelHost::libraryOpenChanged);
    connect(m_controller->layout(), &NotchLayout::expandedChanged, this,
            &NotchPanelHost::expandedChanged);
    connect(&m_player, &PlayerState::artworkChanged, this, &NotchPanelHost::updateArtwork);
}

NotchPanelHost::~NotchPanelHost() {
    // The view outlives the panel and the layer over it: its last signals find nobody here.
    if (m_view)
        disconnect(m_view.get(), nullptr, this, nullptr);
    if (m_controller)
        m_controller->stop();
}

QRectF NotchPanelHost::shape() const {
    const double w = m_motion->width();
    const double h = m_motion->height();
    return {m_motion->centerX() - w / 2, m_motion->top(), w, h};
}

QString NotchPanelHost::formatTime(double seconds) {
    return formatPlayTime(seconds);
}

void NotchPanelHost::openItem(const QVariantMap& item) {
    SpotifyItem target;
    target.uri = target.id = item.value(QStringLiteral("uri")).toString();
    target.name = item.value(QStringLiteral("name")).toString();
    target.kind = item.value(QStringLiteral("kind")).toString();
    // The library opens on the artist or album, unless it already shows it.
    SpotifyBrowser& browser = SpotifyBrowser::shared();
    if (!target.uri.isEmpty() && browser.currentRoute().uri != target.uri)
        browser.openItem(target);
    m_controller->setLibraryOpen(true);
}

void NotchPanelHost::updateDrawnRect() {
    if (!m_panel)
        return;
    const double m = drawnMargin;
    if (m_motion->moving()) {
        // Before and during a move the window holds where the shape is, was and is going, so
        // the window grows once before an opening and never clips a frame of it.
        const NotchLayout* layout = m_controller->layout();
        const QSizeF size = layout->pillSize();
        const QRectF target(layout->pillCenterX() - size.width() / 2, layout->pillTop(),
                            size.width(), size.height());
        m_drawn =
            m_drawn.united(shape().adjusted(-m, -m, m, m)).united(target.adjusted(-m, -m, m, m));
    } else {
        // Settled: shrink to the shape.
        const double s = m_backend == PanelBackend::xwayland ? hoverDrawnMargin : m;
        m_drawn = shape().adjusted(-s, -s, s, s);
    }
    m_panel->setDrawnRect(m_drawn);
    updateOverlay();
}

void NotchPanelHost::updateOverlay() {
    if (!m_overlay)
        return;
    m_overlay->setShape(shape().translated(-m_panel->contentOffset()), cornerRadius(),
                        m_view->devicePixelRatio());
    m_overlay->setResting(!expanded() && !m_motion->moving() && m_view->isVisible());
}

void NotchPanelHost::updateBlur() {
    if (!m_view)
        return;
    // Only glass asks for a blur; the region moves with the drawn shape.
    const PlayerBackground form = PlayerBackdrop::effectiveForm(
        m_theme.backgroundStyleID(), m_theme.reduceTransparency(), false);
    const bool glass = form != PlayerBackground::solid && m_blur.available();
    const double dpr = m_view->devicePixelRatio();
    const QRectF s = shape().translated(m_panel ? -m_panel->contentOffset() : QPoint());
    const QRectF px(s.x() * dpr, s.y() * dpr, s.width() * dpr, s.height() * dpr);
    m_blur.apply(m_view->winId(), glass ? SurfaceGeometry::roundedRegion(px, cornerRadius() * dpr)
                                        : QVector<QRect>());
}

bool NotchPanelHost::show() {
    registerSurfaceTypes();
    m_view = std::make_unique<QQuickView>();
    m_artwork = new ArtworkImageProvider;
    m_view->engine()->addImageProvider(QStringLiteral("artwork"), m_artwork);
    if (m_engineSetup)
        m_engineSetup(*m_view->engine());
    X11NotchPanel::configure(m_view.get());
    m_view->setColor(Qt::transparent);
    // Everything the panel draws is flat and blended in order, so it needs neither a depth nor a
    // stencil buffer (clips are rectangles, done by scissor). Without them a software rasteriser
    // clears and tests one buffer per pixel instead of three.
    QSurfaceFormat format = m_view->format();
    format.setDepthBufferSize(0);
    format.setStencilBufferSize(0);
    m_view->setFormat(format);
    QQuickGraphicsConfiguration graphics = m_view->graphicsConfiguration();
    graphics.setDepthBufferFor2D(false);
    m_view->setGraphicsConfiguration(graphics);
    m_view->setResizeMode(QQuickView::SizeRootObjectToView);
    m_view->setInitialProperties({{QStringLiteral("player"), QVariant::fromValue(&m_player)},
                                  {QStringLiteral("panel"), QVariant::fromValue(this)},
                                  {QStringLiteral("theme"), QVariant::fromValue(&m_theme)}});
    m_view->setSource(QUrl(QStringLiteral("qrc:/qt/qml/MirlPlayer/Panel/PanelSurface.qml")));
    if (m_view->status() != QQuickView::Ready) {
        for (const auto& error : m_view->errors())
            qCWarning(lcPanelHost) << error.toString();
        return false;
    }
    updateArtwork();
    m_panel = std::make_unique<X11NotchPanel>(m_view.get());
    m_panel->onResignKey = [this] {
        if (QQuickItem* item = m_view->activeFocusItem())
            item->setFocus(false);
    };
    m_panel->onContextMenu = m_contextMenu;
    // The window covers only what is drawn; the content moves so that the panel's coordinates
    // stay the frame's.
    m_panel->onContentOffset = [this](QPoint offset) {
        m_view->contentItem()->setPosition(-offset);
        updateOverlay();
    };
    m_panel->editableTextAt = [this](QPointF p) {
        return editableTextAt(m_view->contentItem(), p);
    };
    // The panel holds the keyboard only while a text field is in use: once the field is done
    // (Return, Esc, focus moved on), the keyboard goes back to where it was.
    connect(m_view.get(), &QQuickWindow::activeFocusItemChanged, this, [this] {
        // Resigning clears the focused item, which lands here again: once is enough.
        if (m_resigning || !m_view->isActive() || isEditableText(m_view->activeFocusItem()))
            return;
        const QScopedValueRollback resigning(m_resigning, true);
        m_panel->resignKey();
    });
    if (m_backend == PanelBackend::xwayland) {
        m_windowPointer.attach(m_view.get());
        m_panel->setWatchesHover(true);
    }
    // On X11 the resting pill draws into a layer of its own while the scene holds still.
    std::unique_ptr<PillLayer> layer;
    if (QGuiApplication::platformName() == u"xcb")
        layer = std::make_unique<X11PillLayer>(m_view.get());
    m_overlay = std::make_unique<RestingPillOverlay>(m_player, m_theme, std::move(layer));
    connect(m_overlay.get(), &RestingPillOverlay::coveringChanged, this,
            &NotchPanelHost::pillOverlaidChanged);
    connect(m_view.get(), &QWindow::visibleChanged, this, &NotchPanelHost::updateOverlay);
    connect(this, &NotchPanelHost::expandedChanged, this, &NotchPanelHost::updateOverlay);
    m_controller->start(m_panel.get());
    updateDrawnRect();
    updateBlur();
    return true;
}

void NotchPanelHost::setContextMenu(std::function<bool(QPoint)> menu) {
    m_contextMenu = std::move(menu);
    if (m_panel)
        m_panel->onContextMenu = m_contextMenu;
}

bool NotchPanelHost::editableTextAt(QQuickItem* content, QPointF point) {
    if (!content)
        return false;
    // The frontmost text of any kind under the point decides. Every visible branch is searched,
    // not only the frontmost item's: a list or hover area reaching under a field must not hide
    // it.
    const std::function<int(QQuickItem*)> textAt = [&](QQuickItem* item) {
        const auto children = item->childItems();
        for (auto child = children.crbegin(); child != children.crend(); ++child) {
            if (!(*child)->isVisible())
                continue;
            if (const int found = textAt(*child); found >= 0)
                return found;
        }
        if (isTextItem(item) && item->contains(item->mapFromScene(point)))
            return int(isEditableText(item));
        return -1;
    };
    return textAt(content) == 1;
}

bool NotchPanelHost::isTextItem(const QQuickItem* item) {
    return item && (item->inherits("QQuickTextInput") || item->inherits("QQuickTextEdit"));
}

bool NotchPanelHost::isEditableText(const QQuickItem* item) {
    return isTextItem(item) && !item->property("readOnly").toBool();
}

void NotchPanelHost::updateArtwork() {
    if (m_artwork)
        m_artwork->setImage(m_player.artwork());
    const QString source = m_player.hasArtwork()
                               ? QStringLiteral("image://artwork/%1").arg(++m_artworkGeneration)
                               : QString();
    if (source == m_artworkSource)
        return;
    m_artworkSource = source;
    Q_EMIT artworkSourceChanged();
}

} // namespace MirlPlayer
