#pragma once

#include "library/SpotifyMemoryData.h"

#include <QCoro/QCoroTask>
#include <QObject>
#include <QPromise>
#include <QSet>
#include <QTimer>
#include <QtQml/qqmlregistration.h>
#include <functional>
#include <memory>

class QQmlEngine;
class QJSEngine;

namespace MirlPlayer {

class Clock;
class SerialQueue;
class SpotifyLibrary;

// The on-disk memory of the library: every saved song of the account (gathered by a slow crawl
// that stays behind whatever the user does), the browsed lists, scroll positions, navigation and
// artist pages, in one JSON file in the cache folder. It is a cache only: a missing, spoilt or
// foreign file is an empty memory. Nothing is written before the file's owner is proven to be
// the signed-in account, so a former account's memory is never stamped with the new one.
class SpotifyMemory : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    Q_PROPERTY(bool loading READ loading NOTIFY loadingChanged)
    Q_PROPERTY(QString error READ errorText NOTIFY errorChanged)
    Q_PROPERTY(int revision READ revision NOTIFY revisionChanged)
    Q_PROPERTY(bool complete READ complete NOTIFY dataChanged)
    Q_PROPERTY(int savedCount READ savedCount NOTIFY dataChanged)

public:
    using Snapshot = MemorySnapshot;
    using Page = MemoryPage;
    using Navigation = MemoryNavigation;
    using ArtistEntry = MemoryArtistEntry;
    using OwnerProvider = std::function<QCoro::Task<std::optional<QString>>()>;
    using PageFetcher = std::function<QCoro::Task<SpotifyPage>(QString address)>;
    using Sleeper = std::function<QCoro::Task<void>(double seconds)>;

    static constexpr int pageLimit = 100;
    static constexpr int artistLimit = 80;

    // Starts reading `file` off the GUI thread; the memory is empty until it is published
    // (`dataChanged`), and `prepareMemory` waits for it. The shared instance reads the file of
    // the cache folder.
    SpotifyMemory(QString file, OwnerProvider ownerProvider, PageFetcher fetchPage, Clock& clock,
                  QObject* parent = nullptr);
    ~SpotifyMemory() override;

    static SpotifyMemory& shared();
    static SpotifyMemory* create(QQmlEngine*, QJSEngine*);
    // "MIRL PRO" in the user's cache folder, and the memory file in it.
    static QString cachesFolder();
    static QString defaultFilePath();
    // A plain timer wait, the sleeper of the shared models.
    static QCoro::Task<void> sleepSeconds(double seconds);
    // The crawl's owner and pages through the account session.
    static OwnerProvider ownerFrom(SpotifyLibrary& library);
    static PageFetcher pagesFrom(SpotifyLibrary& library);

    // --- test seams ---
    void setSleeper(Sleeper sleeper) { m_sleeper = std::move(sleeper); }
    void setWriteDelay(int ms) { m_writeTimer.setInterval(ms); }
    // Waits until the file that was read at construction is published.
    void waitUntilRead();
    // Writes a scheduled change now and waits until the file is on disk.
    void flush();

    // --- published state ---
    const Snapshot& data() const { return m_data; }
    bool loading() const { return m_loading; }
    std::optional<QString> error() const { return m_error; }
    QString errorText() const { return m_error.value_or(QString()); }
    int revision() const { return m_revision; }
    bool verified() const { return m_verified; }
    bool isRead() const { return !m_read; }
    bool complete() const { return m_data.complete; }
    int savedCount() const { return int(m_data.saved.size()); }
    const QMap<QString, QString>& livePositions() const { return m_livePositions; }
    QString file() const { return m_file; }

    // --- operations ---
    // Proves that the memory belongs to the signed-in account; raises SpotifyFailure when the
    // account cannot be identified.
    QCoro::Task<void> prepareMemory();
    // Runs the saved-songs crawl to its end, or waits for the one that runs.
    QCoro::Task<void> syncSaved();
    bool isSavedInMemory(const QString& uri);
    std::optional<QList<SpotifyItem>> savedIfComplete() const;
    bool needsConfirmation() const;
    void applyMembership(const SpotifyItem& item, bool saved);
    void storePage(const QString& path, const QList<SpotifyItem>& items,
                   const std::optional<QString>& next, std::optional<qint64> total, double date);
    void storeArtist(const QString& uri, const ArtistEntry& entry);
    void storeNavigation(const QString& tab, const QString& query, const QString& searchKind,
                         const QList<SpotifyRoute>& routes, const QString& filter);
    void rememberPosition(const QString& key, const QString& value);
    Q_INVOKABLE void clearMemory();

Q_SIGNALS:
    void loadingChanged();
    void errorChanged();
    void revisionChanged();
    void dataChanged();

private:
    QCoro::Task<void> crawl();
    void scheduleWrite();
    void writeNow();
    void setLoading(bool value);
    void setError(std::optional<QString> value);
    void endCrawl(int revision);
    void publishRead();

    Snapshot m_data;
    QSet<QString> m_savedSet;
    bool m_savedSetDirty = true;
    QMap<QString, QString> m_livePositions;
    bool m_loading = false;
    std::optional<QString> m_error;
    int m_revision = 0;
    bool m_verified = false;
    QMap<QString, bool> m_membershipChanges;
    // `work`: the running crawl; waiters share its future (one crawl at most).
    std::shared_ptr<QPromise<void>> m_work;
    // The file's snapshot while it is being read on the writer's thread; none once published.
    std::shared_ptr<std::optional<Snapshot>> m_read;
    QPromise<void> m_readDone;
    QString m_file;
    OwnerProvider m_ownerProvider;
    PageFetcher m_fetchPage;
    Sleeper m_sleeper;
    Clock& m_clock;
    QTimer m_writeTimer; // `pendingWrite`: only the last of a burst of changes is written
    std::unique_ptr<SerialQueue> m_writer;
};

} // namespace MirlPlayer
