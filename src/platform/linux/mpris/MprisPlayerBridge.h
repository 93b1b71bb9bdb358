#pragma once

#include "platform/PlayerBridge.h"
#include "platform/linux/mpris/MprisMetadata.h"

#include <QDBusConnection>
#include <QHash>
#include <QMutex>
#include <QObject>
#include <atomic>

class QDBusMessage;

namespace MirlPlayer {

class Preferences;

// The players on Linux, through MPRIS 2 on the session bus. Spotify is its own MPRIS name; the
// other part, "Music", is the player named in the setting `musicPlayer`, else an Apple Music
// client, else the first other MPRIS player.
//
// Which players exist is learnt from the bus's NameOwnerChanged, so sampling a player that is not
// there costs no call at all. Every call to a player has a time limit (5 s), so a hung player
// stalls only the queue that sampled it and yields an empty snapshot. A player's
// PropertiesChanged and Seeked signals, and players coming and going, are the change
// notification.
//
// fetch, command, seek, pid and displayName may be called from any thread (they are called on
// the poll queue); the object itself lives on the thread that created it, which must run an event
// loop for the bus's signals to arrive.
class MprisPlayerBridge final : public QObject, public PlayerBridge {
    Q_OBJECT
public:
    struct Options {
        // Tests give a stand-in player this part.
        QString spotifyService = Mpris::spotifyName.toString();
        int callTimeoutMs = 5000;
    };

    explicit MprisPlayerBridge(Preferences& preferences,
                               const QDBusConnection& bus = QDBusConnection::sessionBus());
    MprisPlayerBridge(Preferences& preferences, const QDBusConnection& bus, Options options);

    Snapshot fetch(Source source) override;
    void command(Source source, const QString& verb) override;
    void seek(Source source, double seconds) override;
    std::optional<qint64> pid(Source source) override;
    QString displayName(Source source) override;
    void openApplication(Source source) override;
    void openUrl(const QUrl& url) override;
    bool openUri(Source source, const QString& uri) override;

    // The bus name that plays the part now, empty when none does.
    QString serviceFor(Source source) const;
    // Calls made to players and the bus since construction, for diagnostics and tests.
    int callsMade() const { return m_calls.load(); }

private Q_SLOTS:
    void onNameOwnerChanged(const QString& name, const QString& oldOwner, const QString& newOwner);
    void onPlayerSignal(const QDBusMessage& message);

private:
    QDBusMessage call(const QString& service, const QString& path, const QString& interface,
                      const QString& method, const QVariantList& arguments = {});
    QVariant property(const QString& service, const QString& interface, const QString& name);
    bool isChosenOwner(const QString& uniqueName) const;

    QDBusConnection m_bus;
    Options m_options;
    std::atomic<int> m_calls{0};

    // Written on the object's thread, read by samples on the poll queue.
    mutable QMutex m_mutex;
    QHash<QString, QString> m_owners; // MPRIS bus name → unique name of its owner
    QString m_musicPlayer;            // copy of the setting, for reads off the GUI thread
};

} // namespace MirlPlayer
