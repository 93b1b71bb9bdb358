#include "app/UpdateController.h"

#include "app/UpdateDownload.h"
#include "app/UpdateFetch.h"
#include "core/Logging.h"
#include "core/Preferences.h"

#include <QDir>
#include <QFile>
#include <QNetworkAccessManager>

namespace MirlPlayer {

namespace {
const QString automaticChecksKey = QStringLiteral("automaticallyChecksForUpdates");
const QString automaticDownloadsKey = QStringLiteral("automaticallyDownloadsUpdates");
const QString lastCheckKey = QStringLiteral("lastUpdateCheckDate");
} // namespace

UpdateController::UpdateController(UpdateConfig config, Preferences& prefs,
                                   UpdateDriverDelegate& delegate, UpdateUserDriver& driver,
                                   QObject* parent)
    : QObject(parent)
    , m_config(std::move(config))
    , m_prefs(prefs)
    , m_delegate(delegate)
    , m_driver(driver)
    , m_network(std::make_unique<QNetworkAccessManager>()) {
    m_schedule.setSingleShot(true);
    connect(&m_schedule, &QTimer::timeout, this, &UpdateController::checkForUpdatesInBackground);
}

UpdateController::~UpdateController() {
    ++m_session;
    if (m_fetch)
        m_fetch->abort();
    delete m_download.data(); // no answer after this
}

QDateTime UpdateController::lastUpdateCheckDate() const {
    return QDateTime::fromString(m_prefs.stringValue(lastCheckKey), Qt::ISODate);
}

bool UpdateController::automaticallyChecksForUpdates() const {
    return m_prefs.boolValue(automaticChecksKey, true);
}

void UpdateController::setAutomaticallyChecksForUpdates(bool on) {
    if (on == automaticallyChecksForUpdates())
        return;
    m_prefs.setValue(automaticChecksKey, on);
    Q_EMIT automaticallyChecksForUpdatesChanged();
    schedule();
}

bool UpdateController::automaticallyDownloadsUpdates() const {
    return m_prefs.boolValue(automaticDownloadsKey, false);
}

void UpdateController::setAutomaticallyDownloadsUpdates(bool on) {
    if (on == automaticallyDownloadsUpdates())
        return;
    m_prefs.setValue(automaticDownloadsKey, on);
    Q_EMIT automaticallyDownloadsUpdatesChanged();
}

void UpdateController::startUpdater() {
    schedule();
}

void UpdateController::schedule() {
    if (!automaticallyChecksForUpdates()) {
        m_schedule.stop();
        return;
    }
    // Daily from the last check; a minute after start at the soonest, so that a launch is
    // never slowed by it.
    const QDateTime last = lastUpdateCheckDate();
    const qint64 due =
        last.isValid() ? QDateTime::currentDateTimeUtc().secsTo(last.addSecs(checkInterval)) : 0;
    m_schedule.start(int(std::clamp<qint64>(due, 60, checkInterval)) * 1000);
}

void UpdateController::checkForUpdates() {
    if (m_busy)
        return;
    if (m_update) {
        // An update waited quietly: the user has seen it now.
        m_delegate.didReceiveUserAttention(*m_update);
        show(true);
        return;
    }
    check(true);
}

void UpdateController::checkForUpdatesInBackground() {
    if (!m_busy)
        check(false);
}

void UpdateController::check(bool userInitiated) {
    const quint64 session = ++m_session;
    setBusy(true);
    UpdateFetch::Options options;
    options.limit = feedLimit;
    options.allowLoopback = m_config.allowLoopback;
    m_fetch = new UpdateFetch(
        *m_network, m_config.feedURL, options, nullptr,
        [this, session, userInitiated](const QString& error) {
            if (session == m_session)
                feedArrived(userInitiated, error);
        },
        this);
}

void UpdateController::feedArrived(bool userInitiated, const QString& error) {
    const QByteArray body = m_fetch ? m_fetch->body() : QByteArray();
    if (m_fetch)
        m_fetch->deleteLater();
    if (!error.isEmpty()) {
        qCWarning(lcCore) << "update feed:" << error;
        feedProblem(userInitiated, QStringLiteral("MIRL PRO couldn’t check for updates. Check your "
                                                  "connection and try again later."));
        return;
    }
    const std::optional<QList<AppcastItem>> items = parseAppcast(body);
    if (!items) {
        feedProblem(userInitiated, QStringLiteral("MIRL PRO couldn’t read the update information. "
                                                  "Try again later."));
        return;
    }
    m_prefs.setValue(lastCheckKey, QDateTime::currentDateTimeUtc().toString(Qt::ISODate));
    Q_EMIT lastUpdateCheckDateChanged();
    schedule();
    setLastProblem({});
    const std::optional<AppcastItem> update = newestUpdate(*items, m_config.currentVersion);
    if (!update) {
        if (m_update)
            endSession(); // what waited is no longer offered
        setBusy(false);
        if (userInitiated)
            m_driver.showUpToDate(m_config.versionText);
        return;
    }
    const QString name = QStringLiteral("MIRL PRO ") + update->displayVersion();
    if (update->signature.size() != 64) {
        refuse(userInitiated, QStringLiteral("The update to ") + name +
                                  QStringLiteral(" isn’t signed, so it wasn’t downloaded."));
        return;
    }
    if (!isAllowedUpdateURL(update->url, m_config.allowLoopback) || update->length <= 0 ||
        update->length > downloadLimit) {
        refuse(userInitiated, QStringLiteral("The update to ") + name +
                                  QStringLiteral(" can’t be downloaded safely, so it wasn’t."));
        return;
    }
    const bool known = m_update && m_update->version == update->version && !m_verified.isEmpty() &&
                       QFile::exists(m_verified);
    m_update = update;
    if (!known)
        m_verified.clear();
    if (!userInitiated && automaticallyDownloadsUpdates() && m_verified.isEmpty())
        download(false, [this] { show(false); });
    else
        show(userInitiated);
}

void UpdateController::download(bool userInitiated, std::function<void()> then) {
    setBusy(true);
    if (userInitiated)
        m_driver.showDownloading(*m_update);
    const quint64 session = m_session;
    m_download = new UpdateDownload(
        *m_network, *m_update, m_config.publicKey, m_config.downloadFolder, m_config.allowLoopback,
        [this, session, userInitiated, then = std::move(then)](const QString& file,
                                                               const QString& problem) {
            if (session != m_session)
                return;
            m_download->deleteLater();
            if (!problem.isEmpty())
                return refuse(userInitiated, problem);
            m_verified = file;
            then();
        },
        this);
}

void UpdateController::show(bool userInitiated) {
    setBusy(false);
    bool handleShowing = true;
    if (!userInitiated) {
        const bool focus = m_config.inImmediateFocus && m_config.inImmediateFocus();
        handleShowing = m_delegate.shouldHandleShowingScheduledUpdate(*m_update, focus);
    }
    m_delegate.willHandleShowingUpdate(handleShowing, *m_update, userInitiated);
    if (!handleShowing)
        return; // it waits quietly until the user asks
    const quint64 session = m_session;
    QPointer<UpdateController> self(this);
    m_driver.showUpdateFound(*m_update, [self, session](bool installNow) {
        if (!self || session != self->m_session || !self->m_update)
            return;
        if (installNow)
            self->install();
        else
            self->endSession();
    });
}

void UpdateController::install() {
    if (m_verified.isEmpty() || !QFile::exists(m_verified)) {
        download(true, [this] { install(); });
        return;
    }
    if (!m_config.openInstaller || !m_config.openInstaller(QUrl::fromLocalFile(m_verified)))
        m_driver.showError(QStringLiteral("MIRL PRO couldn’t open your software installer. The "
                                          "update is saved in ") +
                           QDir::toNativeSeparators(m_config.downloadFolder) + u'.');
    endSession();
}

void UpdateController::refuse(bool userInitiated, const QString& message) {
    qCWarning(lcCore) << "update refused:" << message;
    setLastProblem(message);
    if (userInitiated)
        m_driver.showError(message);
    m_update.reset();
    m_verified.clear();
    endSession();
}

void UpdateController::feedProblem(bool userInitiated, const QString& message) {
    // An update that already waits keeps waiting: the feed may be back tomorrow.
    setLastProblem(message);
    if (userInitiated)
        m_driver.showError(message);
    setBusy(false);
}

void UpdateController::endSession() {
    setBusy(false);
    m_update.reset();
    m_delegate.willFinishUpdateSession();
}

void UpdateController::setBusy(bool busy) {
    if (busy == m_busy)
        return;
    m_busy = busy;
    Q_EMIT canCheckForUpdatesChanged();
}

void UpdateController::setLastProblem(const QString& problem) {
    if (problem == m_lastProblem)
        return;
    m_lastProblem = problem;
    Q_EMIT lastProblemChanged();
}

} // namespace MirlPlayer
