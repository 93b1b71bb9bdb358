#include "library/LibraryScroll.h"

#include "library/SpotifyBrowser.h"
#include "library/SpotifyItemListModel.h"

#include <QWheelEvent>

namespace MirlPlayer {

LibraryScroll::LibraryScroll(QObject* parent)
    : LibraryScroll(SpotifyBrowser::shared(), parent) {}

LibraryScroll::LibraryScroll(SpotifyBrowser& browser, QObject* parent)
    : QObject(parent)
    , m_browser(browser) {
    m_pullRelease.setSingleShot(true);
    m_pullRelease.setInterval(pullReleaseMs);
    connect(&m_pullRelease, &QTimer::timeout, this, [this] { setPullOffset(0); });
    connect(&m_browser, &SpotifyBrowser::routesChanged, this, &LibraryScroll::routeChanged);
    connect(&m_browser, &SpotifyBrowser::tabChanged, this, &LibraryScroll::routeChanged);
    connect(&m_browser, &SpotifyBrowser::loadingChanged, this, &LibraryScroll::tryRestore);
    connect(this, &LibraryScroll::modelChanged, this, [this] {
        if (m_model)
            connect(m_model, &SpotifyItemListModel::countChanged, this, &LibraryScroll::tryRestore,
                    Qt::UniqueConnection);
        routeChanged();
    });
}

LibraryScroll::~LibraryScroll() = default;

void LibraryScroll::setTarget(QQuickItem* target) {
    if (m_target == target)
        return;
    if (m_target)
        m_target->removeEventFilter(this);
    m_target = target;
    if (target) {
        target->installEventFilter(this);
        // A list not yet laid out cannot be put in place: the restore waits for its size.
        connect(target, &QQuickItem::heightChanged, this, &LibraryScroll::tryRestore);
    }
    Q_EMIT targetChanged();
}

void LibraryScroll::setDistance(double distance) {
    m_pull.distance = distance;
    Q_EMIT pullChanged();
}

QString LibraryScroll::key() const {
    return m_remember ? m_browser.currentRoute().path : QString();
}

// --- the filter field ---

void LibraryScroll::track(double delta, bool frozen) {
    const bool was = m_away.hidden;
    m_away.update(delta, frozen, m_canHide, m_offset);
    if (was != m_away.hidden)
        Q_EMIT filterHiddenChanged();
}

void LibraryScroll::offsetChanged(double offset) {
    const bool wasAtTop = atTop();
    m_offset = offset;
    track(0, true);
    if (wasAtTop != atTop())
        Q_EMIT atTopChanged();
}

bool LibraryScroll::eventFilter(QObject* watched, QEvent* event) {
    if (watched == m_target && event->type() == QEvent::Wheel) {
        const auto* wheelEvent = static_cast<QWheelEvent*>(event);
        return wheel(wheelEvent->pixelDelta().y(), wheelEvent->angleDelta().y(),
                     wheelEvent->phase());
    }
    return QObject::eventFilter(watched, event);
}

bool LibraryScroll::wheel(double pixelDeltaY, double angleDeltaY, Qt::ScrollPhase phase) {
    // The user scrolls: a place still to be brought back is theirs to choose now.
    m_restoreKey.clear();
    // Only a touchpad's own movement pulls: a mouse wheel has no pixels, and the glide after the
    // fingers lift never starts a pull.
    const bool touchpad = pixelDeltaY != 0 && phase != Qt::ScrollMomentum;
    if (phase == Qt::ScrollEnd && m_pullOffset > 0) {
        setPullOffset(0);
        return true;
    }
    if (touchpad && atTop() && (pixelDeltaY > 0 || m_pullOffset > 0)) {
        setPullOffset(std::max(0.0, m_pullOffset + pixelDeltaY * pullResistance));
        m_pullRelease.start();
        return true;
    }
    track(scrollWheelDelta(pixelDeltaY, angleDeltaY), false);
    return false;
}

void LibraryScroll::setPullOffset(double offset) {
    if (offset == m_pullOffset)
        return;
    m_pullOffset = offset;
    const bool fire = m_pull.update(offset);
    Q_EMIT pullChanged();
    if (fire)
        Q_EMIT refreshRequested();
}

// --- the remembered place ---

void LibraryScroll::routeChanged() {
    m_restoreKey = key();
    m_savedID.clear();
    m_firstRow = -1;
    // After the view's bindings have settled, once this round of changes is over.
    QMetaObject::invokeMethod(this, &LibraryScroll::tryRestore, Qt::QueuedConnection);
}

int LibraryScroll::rowToRestore() {
    if (m_restoreKey.isEmpty() || m_restoreKey != key() || !m_model)
        return -1;
    const QString id = m_browser.scrollPosition(m_restoreKey);
    if (id.isEmpty()) {
        m_restoreKey.clear(); // nothing remembered: the list starts at its top
        return -1;
    }
    for (int row = 0; row < m_model->count(); ++row)
        if (m_model->at(row).id == id) {
            m_restoreKey.clear();
            m_savedID = id;
            return row;
        }
    // Not there: wait for more rows while they may still come.
    if (!m_browser.loading() && !m_browser.hasNext() && m_model->count() > 0)
        m_restoreKey.clear();
    return -1;
}

void LibraryScroll::tryRestore() {
    if (m_restoreKey.isEmpty() || !m_target || m_target->height() <= 0)
        return;
    if (const int row = rowToRestore(); row >= 0)
        Q_EMIT restoreTo(row);
}

void LibraryScroll::firstRowChanged(int row) {
    // Until the place is brought back, the list's own start is not a place the user chose.
    if (!m_remember || !m_restoreKey.isEmpty() || !m_model || row < 0 || row >= m_model->count() ||
        row == m_firstRow)
        return;
    m_firstRow = row;
    const QString id = m_model->at(row).id;
    if (id == m_savedID)
        return;
    m_savedID = id;
    m_browser.rememberPosition(key(), id);
}

} // namespace MirlPlayer
