#include "platform/linux/mpris/MprisPlayerBridge.h"

#include <QDBusMessage>
#include <QLoggingCategory>
#include <QMutexLocker>

// Which bus name plays which part, and what the bridge knows of the players to decide it.

Q_DECLARE_LOGGING_CATEGORY(lcMpris)

namespace MirlPlayer {

namespace {

const QString playerInterface = QStringLiteral("org.mpris.MediaPlayer2.Player");

} // namespace

QString MprisPlayerBridge::serviceFor(Source source) const {
    if (source == Source::none)
        return {};
    QMutexLocker lock(&m_mutex);
    if (source == Source::music)
        return m_slot.current();
    return Mpris::splitPlayers(m_owners.keys(), m_options.spotifyService).spotify;
}

void MprisPlayerBridge::chooseMusic() {
    std::optional<QString> reason;
    {
        QMutexLocker lock(&m_mutex);
        const QStringList others =
            Mpris::splitPlayers(m_owners.keys(), m_options.spotifyService).others;
        reason = m_slot.update(others, m_playing, m_musicPlayer);
    }
    if (!reason)
        return;
    qCInfo(lcMpris).noquote() << *reason;
    notifyChanged();
}

void MprisPlayerBridge::notePlaying(const QString& name, const QVariant& status) {
    QMutexLocker lock(&m_mutex);
    if (!m_owners.contains(name))
        return; // left meanwhile
    m_statusKnown.insert(name);
    if (status.metaType().id() == QMetaType::QString && status.toString() == u"Playing")
        m_playing.insert(name);
    else
        m_playing.remove(name);
}

void MprisPlayerBridge::learnPlaybackStatuses() {
    QStringList unknown;
    {
        QMutexLocker lock(&m_mutex);
        for (const QString& name :
             Mpris::splitPlayers(m_owners.keys(), m_options.spotifyService).others)
            if (!m_statusKnown.contains(name))
                unknown.append(name);
    }
    if (unknown.isEmpty())
        return;
    for (const QString& name : std::as_const(unknown))
        notePlaying(name, property(name, playerInterface, QStringLiteral("PlaybackStatus")));
    chooseMusic();
}

void MprisPlayerBridge::onNameOwnerChanged(const QString& name, const QString& oldOwner,
                                           const QString& newOwner) {
    if (!name.startsWith(Mpris::namePrefix))
        return;
    {
        QMutexLocker lock(&m_mutex);
        // A new owner is another process: what was known of the old one does not hold.
        m_statusKnown.remove(name);
        m_playing.remove(name);
        m_identities.remove(name);
        if (newOwner.isEmpty())
            m_owners.remove(name);
        else
            m_owners.insert(name, newOwner);
    }
    chooseMusic();
    // A player that appears or leaves changes what the panel shows.
    notifyChanged();
}

bool MprisPlayerBridge::isChosenOwner(const QString& uniqueName) const {
    QMutexLocker lock(&m_mutex);
    const QString spotify = Mpris::splitPlayers(m_owners.keys(), m_options.spotifyService).spotify;
    return (!spotify.isEmpty() && m_owners.value(spotify) == uniqueName) ||
           (!m_slot.current().isEmpty() && m_owners.value(m_slot.current()) == uniqueName);
}

void MprisPlayerBridge::onPlayerSignal(const QDBusMessage& message) {
    if (message.member() == u"PropertiesChanged") {
        const QVariantList args = message.arguments();
        if (args.isEmpty() || args.constFirst().toString() != playerInterface)
            return;
        // Every player's PlaybackStatus counts: which one plays decides the part Music.
        const QVariantMap changed =
            args.size() > 1 ? Mpris::metadataMap(args.at(1)) : QVariantMap();
        const QString statusKey = QStringLiteral("PlaybackStatus");
        if (changed.contains(statusKey)) {
            QStringList names;
            {
                QMutexLocker lock(&m_mutex);
                for (auto it = m_owners.cbegin(); it != m_owners.cend(); ++it)
                    if (it.value() == message.service())
                        names.append(it.key());
            }
            for (const QString& name : std::as_const(names))
                notePlaying(name, changed.value(statusKey));
            chooseMusic();
        }
    }
    if (isChosenOwner(message.service()))
        notifyChanged();
}

} // namespace MirlPlayer
