#include "playback/ArtworkFetcher.h"

#include "core/SerialQueue.h"
#include "look/Palette.h"
#include "look/Theme.h"
#include "playback/PlayerState.h"

#include <QFile>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QUrl>

namespace MirlPlayer {

namespace {

constexpr qint64 kMaxCoverBytes = 64 * 1024 * 1024;

} // namespace

ArtworkFetcher::ArtworkFetcher(PlayerState& state, SerialQueue& workQueue, QObject* parent)
    : QObject(parent)
    , m_state(state)
    , m_queue(workQueue)
    , m_network(new QNetworkAccessManager(this)) {}

void ArtworkFetcher::setTheme(Theme* theme) {
    m_theme = theme;
}

void ArtworkFetcher::showCoverOf(const Snapshot& snapshot, const QString& key) {
    m_key = key;
    // Every player here reports its artwork as an address: Spotify's is on the web, a local
    // player's is usually a file beside the track.
    const QString address = snapshot.artURL.value_or(QString());
    const QUrl url(address);
    const bool fetchable = url.isLocalFile() || url.scheme() == u"https" || url.scheme() == u"http";
    if (snapshot.source == Source::none || address.isEmpty() || !url.isValid() || !fetchable) {
        show({});
        return;
    }
    if (auto cached = m_cache.constFind(address); cached != m_cache.constEnd()) {
        show(*cached);
        return;
    }
    if (url.isLocalFile()) {
        m_queue.async([this, address, path = url.toLocalFile(), key] {
            QImage image;
            QFile file(path);
            if (file.size() < kMaxCoverBytes && file.open(QIODevice::ReadOnly))
                image = QImage::fromData(file.readAll());
            onMain(this, [this, address, image, key] { arrived(address, image, key); });
        });
        return;
    }
    QNetworkReply* reply = m_network->get(QNetworkRequest(url));
    connect(reply, &QNetworkReply::finished, this, [this, reply, address, key] {
        reply->deleteLater();
        const QByteArray data =
            reply->error() == QNetworkReply::NoError ? reply->readAll() : QByteArray();
        m_queue.async([this, data, address, key] {
            const QImage image = QImage::fromData(data);
            onMain(this, [this, address, image, key] { arrived(address, image, key); });
        });
    });
}

void ArtworkFetcher::clear() {
    m_key.clear();
    ++m_shown;
    m_state.publishArtwork({});
}

void ArtworkFetcher::arrived(const QString& address, const QImage& image, const QString& key) {
    if (!image.isNull()) {
        if (m_cache.size() >= cacheLimit)
            m_cache.clear();
        m_cache.insert(address, image);
    }
    // The cover of a track that was skipped meanwhile is kept, but not shown. One that cannot be
    // read shows nothing: the cover of the track before would be wrong.
    if (key == m_key)
        show(image);
}

void ArtworkFetcher::show(const QImage& image) {
    const quint64 shown = ++m_shown;
    m_state.publishArtwork(image);
    if (image.isNull()) {
        m_state.publishAccent(Qt::white);
        if (m_theme)
            m_theme->setArtPalette(std::nullopt);
        return;
    }
    m_queue.async([this, image, shown] {
        const Palette palette = extractPalette(image);
        onMain(this, [this, palette, shown] {
            // A cover shown after this one has its own palette coming; this one is stale.
            if (shown != m_shown)
                return;
            const QColor accent = accentColour(palette);
            m_state.publishAccent(accent.isValid() ? accent : QColor(Qt::white));
            if (m_theme)
                m_theme->setArtPalette(palette.isEmpty() ? std::nullopt
                                                         : std::optional<Palette>(palette));
        });
    });
}

} // namespace MirlPlayer
