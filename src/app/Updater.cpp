#include "app/Updater.h"

#include "app/UpdateAlert.h"
#include "app/UpdateFetch.h"
#include "core/Logging.h"
#include "core/Preferences.h"

#include <QDesktopServices>
#include <QGuiApplication>
#include <QStandardPaths>

namespace MirlPlayer {

Updater::Updater(Preferences& prefs, QObject* parent)
    : QObject(parent)
    , m_prefs(prefs) {}

Updater::~Updater() = default;

Updater& Updater::shared() {
    static Updater* updater = new Updater(Preferences::shared());
    return *updater;
}

void Updater::start() {
    UpdateConfig config;
    config.feedURL = QUrl(QStringLiteral(MIRL_UPDATE_FEED_URL), QUrl::StrictMode);
    config.publicKey = QByteArray::fromBase64(MIRL_UPDATE_PUBLIC_KEY);
    start(std::move(config));
}

void Updater::start(UpdateConfig config, UpdateUserDriver* driver) {
    if (m_controller || config.feedURL.isEmpty())
        return;
    if (config.publicKey.size() != 32 ||
        !isAllowedUpdateURL(config.feedURL, config.allowLoopback)) {
        qCWarning(lcCore) << "updates need an HTTPS feed and the key of its signatures";
        return;
    }
    if (config.currentVersion.isEmpty()) {
        // The feed's versions are build numbers where the build has one.
        config.currentVersion =
            QStringLiteral(MIRL_BUILD_NUMBER).isEmpty() ? MIRL_VERSION : MIRL_BUILD_NUMBER;
        config.versionText = versionText();
    }
    if (config.downloadFolder.isEmpty())
        config.downloadFolder =
            QStandardPaths::writableLocation(QStandardPaths::CacheLocation) + u"/updates";
    if (!config.inImmediateFocus)
        config.inImmediateFocus = [] {
            return QGuiApplication::applicationState() == Qt::ApplicationActive;
        };
    if (!config.openInstaller)
        config.openInstaller = [](const QUrl& file) { return QDesktopServices::openUrl(file); };
    if (!driver) {
        m_ownDriver = std::make_unique<UpdateAlert>();
        driver = m_ownDriver.get();
    }
    m_controller = std::make_unique<UpdateController>(std::move(config), m_prefs, *this, *driver);
    UpdateController* c = m_controller.get();
    connect(c, &UpdateController::canCheckForUpdatesChanged, this, &Updater::mirror);
    connect(c, &UpdateController::lastUpdateCheckDateChanged, this, &Updater::mirror);
    connect(c, &UpdateController::automaticallyChecksForUpdatesChanged, this,
            &Updater::automaticChanged);
    connect(c, &UpdateController::automaticallyDownloadsUpdatesChanged, this,
            &Updater::automaticChanged);
    connect(c, &UpdateController::lastProblemChanged, this, &Updater::lastProblemChanged);
    mirror();
    Q_EMIT availableChanged();
    Q_EMIT automaticChanged();
    Q_EMIT lastProblemChanged();
    c->startUpdater();
}

void Updater::mirror() {
    const bool can = m_controller && m_controller->canCheckForUpdates();
    if (can != m_canCheck) {
        m_canCheck = can;
        Q_EMIT canCheckChanged();
    }
    const QDateTime last = m_controller ? m_controller->lastUpdateCheckDate() : QDateTime();
    if (last != m_lastCheck) {
        m_lastCheck = last;
        Q_EMIT lastCheckChanged();
    }
}

bool Updater::automaticallyChecks() const {
    return m_controller && m_controller->automaticallyChecksForUpdates();
}

void Updater::setAutomaticallyChecks(bool on) {
    if (m_controller)
        m_controller->setAutomaticallyChecksForUpdates(on);
}

bool Updater::automaticallyDownloads() const {
    return m_controller && m_controller->automaticallyDownloadsUpdates();
}

void Updater::setAutomaticallyDownloads(bool on) {
    if (m_controller)
        m_controller->setAutomaticallyDownloadsUpdates(on);
}

QString Updater::lastProblem() const {
    return m_controller ? m_controller->lastProblem() : QString();
}

void Updater::checkForUpdates() {
    if (m_controller)
        m_controller->checkForUpdates();
}

QString Updater::statusLine() const {
    if (!m_controller)
        return QStringLiteral("Updates aren't set up in this build.");
    if (!m_lastCheck.isValid())
        return QStringLiteral("Not checked yet");
    return QStringLiteral("Last checked ") +
           relativeDateText(m_lastCheck, QDateTime::currentDateTimeUtc());
}

void Updater::openWebsite() const {
    QDesktopServices::openUrl(QUrl(QStringLiteral(MIRL_WEBSITE_URL)));
}

QString Updater::versionText() {
    const QString build = QStringLiteral(MIRL_BUILD_NUMBER);
    QString text = QStringLiteral(MIRL_VERSION);
    if (!channel().isEmpty())
        text += u' ' + channel();
    return text + QStringLiteral(" (") + (build.isEmpty() ? QStringLiteral("?") : build) + u')';
}

QString Updater::channel() {
    return QStringLiteral(MIRL_CHANNEL).trimmed();
}

QString Updater::websiteButtonText() {
    QString host = QUrl(QStringLiteral(MIRL_WEBSITE_URL)).host();
    if (host.startsWith(QStringLiteral("www.")))
        host = host.mid(4);
    return host.isEmpty() ? QStringLiteral("Website") : QStringLiteral("Visit ") + host;
}

bool Updater::shouldHandleShowingScheduledUpdate(const AppcastItem&, bool immediateFocus) {
    // The update window shows itself only where it would not steal focus.
    return immediateFocus;
}

void Updater::willHandleShowingUpdate(bool handleShowing, const AppcastItem& update,
                                      bool userInitiated) {
    // A shown window is raised by the window itself; a quiet one waits in the status menu.
    if (!handleShowing && !userInitiated)
        setPendingVersion(update.displayVersion());
}

void Updater::didReceiveUserAttention(const AppcastItem&) {
    setPendingVersion({});
}

void Updater::willFinishUpdateSession() {
    setPendingVersion({});
}

void Updater::setPendingVersion(const QString& version) {
    if (version == m_pendingVersion)
        return;
    m_pendingVersion = version;
    Q_EMIT pendingVersionChanged();
}

QString relativeDateText(const QDateTime& then, const QDateTime& now) {
    const qint64 seconds = then.secsTo(now);
    const auto ago = [](qint64 n, const char* unit) {
        return QString::number(n) + u' ' + QLatin1String(unit) + (n == 1 ? "" : "s") + " ago";
    };
    if (seconds < 60)
        return QStringLiteral("just now");
    if (seconds < 3600)
        return ago(seconds / 60, "minute");
    if (seconds < 86400)
        return ago(seconds / 3600, "hour");
    const qint64 days = seconds / 86400;
    if (days == 1)
        return QStringLiteral("yesterday");
    if (days < 7)
        return ago(days, "day");
    if (days < 14)
        return QStringLiteral("last week");
    if (days < 30)
        return ago(days / 7, "week");
    if (days < 60)
        return QStringLiteral("last month");
    if (days < 365)
        return ago(days / 30, "month");
    if (days < 730)
        return QStringLiteral("last year");
    return ago(days / 365, "year");
}

} // namespace MirlPlayer
