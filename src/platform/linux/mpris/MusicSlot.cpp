#include "platform/linux/mpris/MusicSlot.h"

#include "platform/linux/mpris/MprisMetadata.h"

namespace MirlPlayer::Mpris {

namespace {

QString shortName(const QString& busName) {
    return busName.mid(namePrefix.size());
}

} // namespace

bool MusicSlot::isBrowser(const QString& busName) {
    const QString name = shortName(busName);
    for (const char* base : {"chromium", "firefox", "plasma-browser-integration", "kdeconnect"})
        if (isNameOrInstance(name, QString::fromLatin1(base)))
            return true;
    return false;
}

std::pair<QString, QString> MusicSlot::choose(const QStringList& players,
                                              const QSet<QString>& playing,
                                              const QString& musicPlayer) const {
    const QString named = musicPlayer.trimmed();
    for (const QString& name : players)
        if (!named.isEmpty() && isNameOrInstance(shortName(name), named))
            return {name, QStringLiteral("the setting musicPlayer names it")};

    QStringList real;
    QStringList browsers;
    for (const QString& name : players)
        if (playing.contains(name))
            (isBrowser(name) ? browsers : real).append(name);
    // The choice that plays keeps the part: no change in the middle of its song.
    const auto keepOrFirst = [this](const QStringList& names) {
        return names.contains(m_current) ? m_current : names.first();
    };
    if (!real.isEmpty())
        return {keepOrFirst(real), QStringLiteral("it plays")};
    if (!browsers.isEmpty())
        return {keepOrFirst(browsers), QStringLiteral("it plays and no other player does")};
    if (players.contains(m_lastPlayed))
        return {m_lastPlayed, QStringLiteral("nothing plays and it played last")};
    if (players.contains(m_current))
        return {m_current, {}};
    for (const QString& name : players)
        if (!isBrowser(name))
            return {name, QStringLiteral("nothing plays and it is the first player")};
    return {players.value(0), QStringLiteral("nothing plays and it is the first player")};
}

std::optional<QString> MusicSlot::update(QStringList players, const QSet<QString>& playing,
                                         const QString& musicPlayer) {
    players.sort();
    const auto [choice, reason] = choose(players, playing, musicPlayer);
    if (playing.contains(choice))
        m_lastPlayed = choice;
    if (choice == m_current)
        return std::nullopt;
    m_current = choice;
    if (choice.isEmpty())
        return QStringLiteral("no player plays the part Music: none is left");
    return shortName(choice) + QStringLiteral(" plays the part Music: ") + reason;
}

} // namespace MirlPlayer::Mpris
