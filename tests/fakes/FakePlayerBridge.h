#pragma once

#include "platform/PlayerBridge.h"

#include <QMutex>
#include <QStringList>

namespace MirlPlayer {

// A player bridge whose players are whatever the test says. Thread-safe: sampling and commands
// arrive on the poll queue.
class FakePlayerBridge : public PlayerBridge {
public:
    void setSnapshot(const Snapshot& snapshot) {
        QMutexLocker lock(&m_mutex);
        (snapshot.source == Source::music ? m_music : m_spotify) = snapshot;
    }
    Snapshot fetch(Source source) override {
        QMutexLocker lock(&m_mutex);
        ++m_fetches;
        return source == Source::music ? m_music : m_spotify;
    }
    void command(Source source, const QString& verb) override {
        QMutexLocker lock(&m_mutex);
        m_commands << sourceRawValue(source) + QStringLiteral(": ") + verb;
    }
    void seek(Source source, double seconds) override {
        QMutexLocker lock(&m_mutex);
        m_commands << sourceRawValue(source) + QStringLiteral(": seek ") +
                          QString::number(seconds, 'f', 3);
    }
    std::optional<qint64> pid(Source) override { return std::nullopt; }
    QString displayName(Source source) override { return sourceRawValue(source); }
    void openApplication(Source source) override {
        QMutexLocker lock(&m_mutex);
        m_commands << QStringLiteral("open ") + sourceRawValue(source);
    }
    void openUrl(const QUrl& url) override {
        QMutexLocker lock(&m_mutex);
        m_commands << QStringLiteral("open ") + url.toString();
    }
    bool openUri(Source source, const QString& uri) override {
        QMutexLocker lock(&m_mutex);
        m_commands << sourceRawValue(source) + QStringLiteral(": open ") + uri;
        return false;
    }
    void announceChange() { notifyChanged(); }

    QStringList commands() {
        QMutexLocker lock(&m_mutex);
        return m_commands;
    }
    int fetches() {
        QMutexLocker lock(&m_mutex);
        return m_fetches;
    }

private:
    QMutex m_mutex;
    Snapshot m_spotify = Snapshot::empty(Source::spotify);
    Snapshot m_music = Snapshot::empty(Source::music);
    QStringList m_commands;
    int m_fetches = 0;
};

// A snapshot with a track, for tests.
inline Snapshot track(Source source, const QString& title, bool playing, double positionMs = 0,
                      double durationMs = 300000, std::optional<QString> uri = std::nullopt) {
    Snapshot s = Snapshot::empty(source);
    s.hasTrack = true;
    s.playing = playing;
    s.title = title;
    s.artist = QStringLiteral("Artist of ") + title;
    s.album = QStringLiteral("Album");
    s.durationMs = durationMs;
    s.positionMs = positionMs;
    s.trackURI = uri;
    return s;
}

} // namespace MirlPlayer
