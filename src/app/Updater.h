#pragma once

#include "app/UpdateController.h"

#include <QDateTime>
#include <QObject>
#include <memory>

namespace MirlPlayer {

class Preferences;

// The program's updates: a thin owner of the update controller that mirrors its state for the
// status menu and Settings. A build configured without a feed (or without the key its updates
// are signed with) has no controller at all, and every surface says so. An update that a
// scheduled check finds while no window of ours is in front never takes focus: it waits as
// `pendingVersion`, which the status menu shows. GUI thread.
class Updater : public QObject, public UpdateDriverDelegate {
    Q_OBJECT
    Q_PROPERTY(bool available READ available NOTIFY availableChanged)
    Q_PROPERTY(bool canCheck READ canCheck NOTIFY canCheckChanged)
    Q_PROPERTY(QDateTime lastCheck READ lastCheck NOTIFY lastCheckChanged)
    Q_PROPERTY(QString pendingVersion READ pendingVersion NOTIFY pendingVersionChanged)
    Q_PROPERTY(bool automaticallyChecks READ automaticallyChecks WRITE setAutomaticallyChecks NOTIFY
                   automaticChanged)
    Q_PROPERTY(bool automaticallyDownloads READ automaticallyDownloads WRITE
                   setAutomaticallyDownloads NOTIFY automaticChanged)
    Q_PROPERTY(QString lastProblem READ lastProblem NOTIFY lastProblemChanged)
    Q_PROPERTY(QString versionText READ versionText CONSTANT)
    Q_PROPERTY(QString channel READ channel CONSTANT)
    Q_PROPERTY(QString websiteButtonText READ websiteButtonText CONSTANT)
public:
    explicit Updater(Preferences& prefs, QObject* parent = nullptr);
    ~Updater() override;
    static Updater& shared();

    // With the values this build was configured with. Does nothing a second time.
    void start();
    // With other values (tests, the demo's pictures); `driver` replaces the update window.
    void start(UpdateConfig config, UpdateUserDriver* driver = nullptr);

    UpdateController* controller() const { return m_controller.get(); }
    bool available() const { return m_controller != nullptr; }
    bool canCheck() const { return m_canCheck; }
    QDateTime lastCheck() const { return m_lastCheck; }
    QString pendingVersion() const { return m_pendingVersion; }
    bool automaticallyChecks() const;
    void setAutomaticallyChecks(bool on);
    bool automaticallyDownloads() const;
    void setAutomaticallyDownloads(bool on);
    QString lastProblem() const;

    // "Check for Updates…" and "Update Now": shows the waiting update, or checks.
    Q_INVOKABLE void checkForUpdates();
    // The status line of the updates page as of `now`.
    Q_INVOKABLE QString statusLine() const;
    Q_INVOKABLE void openWebsite() const;

    // The release, the channel after a blank when there is one, then the build number in
    // brackets ("?" where the build has none). Follows "MIRL PRO " and "MIRL ".
    static QString versionText();
    // The release channel this build was configured with, or empty.
    static QString channel();
    // "Visit " and the website's host without "www.", or "Website".
    static QString websiteButtonText();

    bool shouldHandleShowingScheduledUpdate(const AppcastItem& update,
                                            bool immediateFocus) override;
    void willHandleShowingUpdate(bool handleShowing, const AppcastItem& update,
                                 bool userInitiated) override;
    void didReceiveUserAttention(const AppcastItem& update) override;
    void willFinishUpdateSession() override;

Q_SIGNALS:
    void availableChanged();
    void canCheckChanged();
    void lastCheckChanged();
    void pendingVersionChanged();
    void automaticChanged();
    void lastProblemChanged();

private:
    void setPendingVersion(const QString& version);
    void mirror();

    Preferences& m_prefs;
    std::unique_ptr<UpdateUserDriver> m_ownDriver;
    std::unique_ptr<UpdateController> m_controller;
    bool m_canCheck = false;
    QDateTime m_lastCheck;
    QString m_pendingVersion;
};

// "now", "5 minutes ago", "yesterday", "last week", "3 months ago": how long ago `then` was.
QString relativeDateText(const QDateTime& then, const QDateTime& now);

} // namespace MirlPlayer
