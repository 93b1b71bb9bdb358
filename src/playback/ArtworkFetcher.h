#pragma once

#include "playback/Snapshot.h"

#include <QHash>
#include <QImage>
#include <QObject>
#include <QPointer>
#include <QString>

class QNetworkAccessManager;

namespace MirlPlayer {

class PlayerState;
class SerialQueue;
class Theme;

// The cover of the current track: read from a file or fetched from the web, decoded on the poll
// queue, cached by address, shown only while its track is still the current one, and turned into
// the accent colour and the theme's palette. A cover that cannot be had shows no artwork rather
// than the cover of the track before. GUI thread, except the decoding and the palette.
class ArtworkFetcher : public QObject {
    Q_OBJECT
public:
    static constexpr int cacheLimit = 31;

    ArtworkFetcher(PlayerState& state, SerialQueue& workQueue, QObject* parent = nullptr);

    // The theme that takes the palette of each cover shown; without one only the accent follows.
    void setTheme(Theme* theme);
    // A new track, known by `key`: its cover, or none when it has no usable address.
    void showCoverOf(const Snapshot& snapshot, const QString& key);
    // No track: the artwork goes, the accent and the palette stay as they stand.
    void clear();
    int cacheSize() const { return int(m_cache.size()); }

private:
    void show(const QImage& image);
    void arrived(const QString& address, const QImage& image, const QString& key);

    PlayerState& m_state;
    SerialQueue& m_queue;
    QNetworkAccessManager* m_network;
    QHash<QString, QImage> m_cache;
    QString m_key;       // the track whose cover is wanted
    quint64 m_shown = 0; // counts covers shown, so that a late palette knows it is stale
    QPointer<Theme> m_theme;
};

} // namespace MirlPlayer
