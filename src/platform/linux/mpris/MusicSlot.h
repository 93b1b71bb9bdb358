#pragma once

#include <QSet>
#include <QString>
#include <QStringList>
#include <optional>
#include <utility>

namespace MirlPlayer::Mpris {

// Which of the players other than Spotify plays the part "Music" (and so is the process whose
// sound is captured). In order: the player named in the setting `musicPlayer`; else a playing
// player, where browsers and phone bridges (`chromium.*`, `firefox.*`,
// `plasma-browser-integration`, `kdeconnect.*`) count only when nothing else plays; else the one
// that played last; else the first that is no browser, else the first. A choice that plays keeps
// the part while it plays: another player starting meanwhile does not take it over mid-song,
// unless the choice is a browser and a real player starts.
class MusicSlot {
public:
    // Chooses again among `players` (full bus names), knowing which of them play. Returns why,
    // in words for the log, when the choice changed.
    std::optional<QString> update(QStringList players, const QSet<QString>& playing,
                                  const QString& musicPlayer);
    const QString& current() const { return m_current; }

    static bool isBrowser(const QString& busName);

private:
    // The player for the part and the reason, out of players in name order.
    std::pair<QString, QString> choose(const QStringList& players, const QSet<QString>& playing,
                                       const QString& musicPlayer) const;

    QString m_current;
    QString m_lastPlayed;
};

} // namespace MirlPlayer::Mpris
