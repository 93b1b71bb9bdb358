#pragma once

#include "app/Appcast.h"

#include <QDateTime>
#include <QObject>
#include <QPointer>
#include <QTimer>
#include <QUrl>
#include <functional>
#include <memory>
#include <optional>

class QNetworkAccessManager;

namespace MirlPlayer {

class Preferences;
class UpdateDownload;
class UpdateFetch;

// Hears how a found update is shown (the owner decides whether a scheduled one may take focus).
class UpdateDriverDelegate {
public:
    virtual ~UpdateDriverDelegate() = default;
    // Whether the updater's own window may show an update a scheduled check found.
    virtual bool shouldHandleShowingScheduledUpdate(const AppcastItem& update,
                                                    bool immediateFocus) = 0;
    virtual void willHandleShowingUpdate(bool handleShowing, const AppcastItem& update,
                                         bool userInitiated) = 0;
    // The user brought up an update that waited quietly.
    virtual void didReceiveUserAttention(const AppcastItem& update) = 0;
    virtual void willFinishUpdateSession() = 0;
};

// The updater's own window: what it shows the user.
class UpdateUserDriver {
public:
    virtual ~UpdateUserDriver() = default;
    // An update to install; `reply(true)` installs it, `reply(false)` puts it off.
    virtual void showUpdateFound(const AppcastItem& update, std::function<void(bool)> reply) = 0;
    virtual void showUpToDate(const QString& versionText) = 0;
    virtual void showDownloading(const AppcastItem& update) = 0;
    // A failure the user should know about, as a finished sentence.
    virtual void showError(const QString& message) = 0;
};

struct UpdateConfig {
    QUrl feedURL;
    QByteArray publicKey;   // Ed25519, 32 bytes
    QString currentVersion; // what the feed's versions are compared with
    QString versionText;    // what "You're up to date" names
    QString downloadFolder; // where updates are kept until they are installed
    bool allowLoopback = false;
    std::function<bool()> inImmediateFocus; // whether a window of ours is in front
    std::function<bool(const QUrl&)> openInstaller;
};

// Checks the feed, daily on its own and when asked, downloads an update to the download folder,
// verifies its signature, and hands it to the desktop's installer. A scheduled check stays quiet
// unless a window of ours is in front. All on the GUI thread; the network never blocks it and
// the signature is checked on a worker. A newer session makes any older answer stale.
class UpdateController : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool canCheckForUpdates READ canCheckForUpdates NOTIFY canCheckForUpdatesChanged)
    Q_PROPERTY(
        QDateTime lastUpdateCheckDate READ lastUpdateCheckDate NOTIFY lastUpdateCheckDateChanged)
    Q_PROPERTY(bool automaticallyChecksForUpdates READ automaticallyChecksForUpdates WRITE
                   setAutomaticallyChecksForUpdates NOTIFY automaticallyChecksForUpdatesChanged)
    Q_PROPERTY(bool automaticallyDownloadsUpdates READ automaticallyDownloadsUpdates WRITE
                   setAutomaticallyDownloadsUpdates NOTIFY automaticallyDownloadsUpdatesChanged)
    Q_PROPERTY(QString lastProblem READ lastProblem NOTIFY lastProblemChanged)
public:
    static constexpr qint64 feedLimit = 1024 * 1024;
    static constexpr qint64 downloadLimit = 512 * 1024 * 1024;
    static constexpr int checkInterval = 24 * 60 * 60; // seconds

    UpdateController(UpdateConfig config, Preferences& prefs, UpdateDriverDelegate& delegate,
                     UpdateUserDriver& driver, QObject* parent = nullptr);
    ~UpdateController() override;

    bool canCheckForUpdates() const { return !m_busy; }
    QDateTime lastUpdateCheckDate() const;
    bool automaticallyChecksForUpdates() const;
    void setAutomaticallyChecksForUpdates(bool on);
    bool automaticallyDownloadsUpdates() const;
    void setAutomaticallyDownloadsUpdates(bool on);

    // Arms the daily check.
    void startUpdater();
    // The user asked: an update that waits is shown; otherwise the feed is checked.
    void checkForUpdates();
    // The scheduled check: quiet.
    void checkForUpdatesInBackground();

    // Why the last update was refused, as a finished sentence; empty after a good check.
    QString lastProblem() const { return m_lastProblem; }
    // The verified file of the update found, once there is one.
    QString verifiedFile() const { return m_verified; }

Q_SIGNALS:
    void canCheckForUpdatesChanged();
    void lastUpdateCheckDateChanged();
    void automaticallyChecksForUpdatesChanged();
    void automaticallyDownloadsUpdatesChanged();
    void lastProblemChanged();

private:
    void check(bool userInitiated);
    void feedArrived(bool userInitiated, const QString& error);
    void download(bool userInitiated, std::function<void()> then);
    void show(bool userInitiated);
    void install();
    void refuse(bool userInitiated, const QString& message);
    void feedProblem(bool userInitiated, const QString& message);
    void endSession();
    void setBusy(bool busy);
    void setLastProblem(const QString& problem);
    void schedule();

    UpdateConfig m_config;
    Preferences& m_prefs;
    UpdateDriverDelegate& m_delegate;
    UpdateUserDriver& m_driver;
    std::unique_ptr<QNetworkAccessManager> m_network;
    QPointer<UpdateFetch> m_fetch;
    QTimer m_schedule;
    std::optional<AppcastItem> m_update; // the update of the session, found and not yet done
    QString m_verified;                  // its file, once downloaded and verified
    QPointer<UpdateDownload> m_download;
    QString m_lastProblem;
    quint64 m_session = 0; // answers of an older session are dropped
    bool m_busy = false;
};

} // namespace MirlPlayer
