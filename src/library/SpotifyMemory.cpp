#include "library/SpotifyMemory.h"

#include "core/Clock.h"
#include "core/PrivateFile.h"
#include "core/SerialQueue.h"
#include "spotify/SpotifyError.h"
#include "spotify/SpotifyLibrary.h"

#include <QCoro/QCoroFuture>
#include <QCoro/QCoroTimer>
#include <QDir>
#include <QFile>
#include <QPointer>
#include <QQmlEngine>
#include <QStandardPaths>
#include <chrono>

namespace MirlPlayer {

namespace {

QCoro::Task<std::optional<QString>> ownerOf(SpotifyLibrary* library) {
    co_return co_await library->userCollectionURI();
}

QCoro::Task<SpotifyPage> pageOf(SpotifyLibrary* library, QString address) {
    const QJsonObject object = co_await library->getJSON(address, true);
    co_return pageFromJSON(object);
}

} // namespace

SpotifyMemory::SpotifyMemory(QString file, OwnerProvider ownerProvider, PageFetcher fetchPage,
                             Clock& clock, QObject* parent)
    : QObject(parent)
    , m_file(std::move(file))
    , m_ownerProvider(std::move(ownerProvider))
    , m_fetchPage(std::move(fetchPage))
    , m_sleeper(sleepSeconds)
    , m_clock(clock)
    , m_writer(std::make_unique<SerialQueue>(QStringLiteral("mirl.library.write"),
                                             QThread::LowPriority)) {
    // Ten thousand songs take a good part of a second to read and decode under load: the writer's
    // thread does it, ahead of any write or removal, and the GUI thread only takes the result.
    // A missing, unreadable or spoilt file is simply an empty memory.
    m_readDone.start();
    m_read = std::make_shared<std::optional<Snapshot>>();
    m_writer->async([this, read = m_read, file = m_file] {
        if (const auto bytes = readFile(file, 512 * 1024 * 1024))
            *read = decodeMemory(*bytes);
        onMain(this, [this] { publishRead(); });
    });
    m_writeTimer.setSingleShot(true);
    m_writeTimer.setInterval(1000);
    connect(&m_writeTimer, &QTimer::timeout, this, &SpotifyMemory::writeNow);
}

SpotifyMemory::~SpotifyMemory() {
    // A change made in the last second before quitting still reaches the disk.
    if (m_writeTimer.isActive())
        writeNow();
    m_writer->sync([] {});
}

SpotifyMemory& SpotifyMemory::shared() {
    static SpotifyMemory* memory = [] {
        SpotifyLibrary& library = SpotifyLibrary::shared();
        auto* made = new SpotifyMemory(defaultFilePath(), ownerFrom(library), pagesFrom(library),
                                       Clock::system());
        connect(&library, &SpotifyLibrary::sessionReset, made, &SpotifyMemory::clearMemory);
        return made;
    }();
    return *memory;
}

SpotifyMemory* SpotifyMemory::create(QQmlEngine*, QJSEngine*) {
    QQmlEngine::setObjectOwnership(&shared(), QQmlEngine::CppOwnership);
    return &shared();
}

QCoro::Task<void> SpotifyMemory::sleepSeconds(double seconds) {
    co_await QCoro::sleepFor(std::chrono::milliseconds(qint64(seconds * 1000.0)));
}

QString SpotifyMemory::cachesFolder() {
    return QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation) +
           QStringLiteral("/MIRL PRO");
}

QString SpotifyMemory::defaultFilePath() {
    return cachesFolder() + QStringLiteral("/spotify-library.json");
}

SpotifyMemory::OwnerProvider SpotifyMemory::ownerFrom(SpotifyLibrary& library) {
    return [lib = &library] { return ownerOf(lib); };
}

SpotifyMemory::PageFetcher SpotifyMemory::pagesFrom(SpotifyLibrary& library) {
    return [lib = &library](QString address) { return pageOf(lib, std::move(address)); };
}

void SpotifyMemory::publishRead() {
    if (!m_read)
        return;
    std::optional<Snapshot> read = std::move(*m_read);
    m_read.reset();
    // A reset while the file was read removed it: what was read is gone too.
    if (read && m_revision == 0) {
        // Lists stored before the file was there are newer than the file's.
        Snapshot early = std::move(m_data);
        m_data = std::move(*read);
        for (auto it = early.pages.cbegin(); it != early.pages.cend(); ++it)
            m_data.pages.insert(it.key(), it.value());
        if (early.artists) {
            if (!m_data.artists)
                m_data.artists.emplace();
            m_data.artists->insert(*early.artists);
        }
        if (early.navigation)
            m_data.navigation = std::move(early.navigation);
        m_savedSetDirty = true;
    }
    m_readDone.finish();
    Q_EMIT dataChanged();
}

void SpotifyMemory::waitUntilRead() {
    m_writer->sync([] {});
    publishRead();
}

QCoro::Task<void> SpotifyMemory::prepareMemory() {
    if (m_verified)
        co_return;
    const int revision = m_revision;
    QPointer<SpotifyMemory> self(this);
    if (m_read) {
        co_await m_readDone.future();
        if (!self)
            throw SpotifyCancellation();
    }
    const std::optional<QString> owner = co_await m_ownerProvider();
    if (!self)
        throw SpotifyCancellation();
    if (!owner)
        throw SpotifyFailure(QStringLiteral("Couldn’t identify your Spotify account. Try again."));
    if (revision != m_revision)
        throw SpotifyCancellation();
    if (m_data.owner != *owner) {
        m_data = Snapshot();
        m_data.owner = *owner;
        m_savedSetDirty = true;
        // Before `verified` is set this writes nothing: the old file stays until the next change.
        scheduleWrite();
        Q_EMIT dataChanged();
    }
    m_verified = true;
}

bool SpotifyMemory::isSavedInMemory(const QString& uri) {
    if (!m_verified)
        return false;
    if (m_savedSetDirty) {
        m_savedSet.clear();
        m_savedSet.reserve(m_data.saved.size());
        for (const SpotifyItem& item : std::as_const(m_data.saved))
            m_savedSet.insert(item.uri);
        m_savedSetDirty = false;
    }
    return m_savedSet.contains(uri);
}

std::optional<QList<SpotifyItem>> SpotifyMemory::savedIfComplete() const {
    if (m_verified && m_data.complete && !m_data.saved.isEmpty())
        return m_data.saved;
    return std::nullopt;
}

bool SpotifyMemory::needsConfirmation() const {
    return !m_verified && m_data.complete && !m_data.saved.isEmpty();
}

void SpotifyMemory::applyMembership(const SpotifyItem& item, bool saved) {
    if (!m_verified)
        return;
    m_membershipChanges.insert(item.uri, saved);
    m_data.saved.removeIf([&](const SpotifyItem& s) { return s.uri == item.uri; });
    if (saved)
        m_data.saved.prepend(item);
    m_data.pages.removeIf([](auto it) { return it.key().startsWith(u"me/tracks"); });
    m_savedSetDirty = true;
    scheduleWrite();
    Q_EMIT dataChanged();
}

void SpotifyMemory::storePage(const QString& path, const QList<SpotifyItem>& items,
                              const std::optional<QString>& next, std::optional<qint64> total,
                              double date) {
    m_data.pages.insert(path, Page{items, next, total, date});
    if (m_data.pages.size() > pageLimit) {
        // The keys' order, not their age: deliberately simple. QMap keeps them sorted.
        for (auto it = m_data.pages.begin(); it != m_data.pages.end(); ++it) {
            if (it.key() != path) {
                m_data.pages.erase(it);
                break;
            }
        }
    }
    scheduleWrite();
}

void SpotifyMemory::storeArtist(const QString& uri, const ArtistEntry& entry) {
    if (!m_data.artists)
        m_data.artists.emplace();
    m_data.artists->insert(uri, entry);
    if (m_data.artists->size() > artistLimit) {
        auto oldest = m_data.artists->begin();
        for (auto it = m_data.artists->begin(); it != m_data.artists->end(); ++it)
            if (it->fetched < oldest->fetched)
                oldest = it;
        m_data.artists->erase(oldest);
    }
    scheduleWrite();
}

void SpotifyMemory::storeNavigation(const QString& tab, const QString& query,
                                    const QString& searchKind, const QList<SpotifyRoute>& routes,
                                    const QString& filter) {
    m_data.navigation = Navigation{tab, query, searchKind, routes, filter};
    scheduleWrite();
}

void SpotifyMemory::rememberPosition(const QString& key, const QString& value) {
    m_livePositions.insert(key, value);
}

void SpotifyMemory::clearMemory() {
    if (m_work)
        m_work->finish();
    m_work.reset();
    ++m_revision;
    m_writeTimer.stop();
    m_livePositions.clear();
    m_data = Snapshot();
    m_savedSetDirty = true;
    m_verified = false;
    setLoading(false);
    setError(std::nullopt);
    m_membershipChanges.clear();
    // Behind any write already handed to the writer, so none can bring the file back.
    m_writer->async([file = m_file] { QFile::remove(file); });
    Q_EMIT revisionChanged();
    Q_EMIT dataChanged();
}

void SpotifyMemory::scheduleWrite() {
    if (!m_verified)
        return;
    m_writeTimer.start();
}

void SpotifyMemory::writeNow() {
    m_writeTimer.stop();
    if (!m_verified)
        return;
    Snapshot copy = m_data; // shares the lists; the writer encodes it off the GUI thread
    for (auto it = m_livePositions.cbegin(); it != m_livePositions.cend(); ++it)
        copy.positions.insert(it.key(), it.value());
    // Failures are ignored: the next change tries again.
    m_writer->async(
        [copy = std::move(copy), file = m_file] { writePrivateFile(file, encodeMemory(copy)); });
}

void SpotifyMemory::flush() {
    if (m_writeTimer.isActive())
        writeNow();
    m_writer->sync([] {});
}

void SpotifyMemory::setLoading(bool value) {
    if (m_loading == value)
        return;
    m_loading = value;
    Q_EMIT loadingChanged();
}

void SpotifyMemory::setError(std::optional<QString> value) {
    if (m_error == value)
        return;
    m_error = std::move(value);
    Q_EMIT errorChanged();
}

} // namespace MirlPlayer
