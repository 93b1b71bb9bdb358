// The saved-songs crawl: one page at once, then less than one page per 1.5 s behind whatever the
// user does, resumable at `savedNext` after any failure or restart.
#include "library/SpotifyMemory.h"
#include "spotify/SpotifyError.h"

#include <QCoro/QCoroFuture>
#include <QPointer>

namespace MirlPlayer {

QCoro::Task<void> SpotifyMemory::syncSaved() {
    if (m_verified && m_data.complete)
        co_return;
    if (m_work) {
        QFuture<void> running = m_work->future();
        co_await running;
        co_return;
    }
    auto work = std::make_shared<QPromise<void>>();
    work->start();
    m_work = work;
    co_await crawl();
    work->finish(); // every waiter goes on, after a reset too
}

QCoro::Task<void> SpotifyMemory::crawl() {
    const int revision = m_revision;
    QPointer<SpotifyMemory> self(this);
    setLoading(true);
    setError(std::nullopt);
    try {
        co_await prepareMemory();
        if (!self || revision != m_revision)
            co_return;
        std::optional<QString> address = m_data.complete ? std::nullopt : m_data.savedNext;
        QSet<QString> visited;
        while (address) {
            if (visited.contains(*address))
                throw SpotifyFailure(
                    QStringLiteral("Spotify repeated a page. Clear the cache and try again."));
            visited.insert(*address);
            // The first page comes at once; the rest trickle in behind what the user does.
            if (visited.size() >= 2) {
                co_await m_sleeper(1.5);
                if (!self || revision != m_revision)
                    co_return;
            }
            const SpotifyPage page = co_await m_fetchPage(*address);
            // The answer belongs to an account or a cache that is gone.
            if (!self || revision != m_revision)
                co_return;
            QSet<QString> known;
            known.reserve(m_data.saved.size() + page.items.size());
            for (const SpotifyItem& item : std::as_const(m_data.saved))
                known.insert(item.uri);
            for (const SpotifyItem& item : page.items) {
                // Unliked during the crawl: a later page still lists it.
                if (m_membershipChanges.value(item.uri, true) == false)
                    continue;
                if (known.contains(item.uri))
                    continue;
                known.insert(item.uri);
                m_data.saved.append(item);
            }
            m_data.savedNext = page.next;
            m_data.complete = !page.next.has_value();
            m_savedSetDirty = true;
            scheduleWrite();
            Q_EMIT dataChanged();
            address = page.next;
        }
    } catch (const SpotifyError& e) {
        if (self && revision == m_revision && !e.isCancellation())
            setError(e.localizedDescription());
    } catch (const std::exception& e) {
        if (self && revision == m_revision)
            setError(QString::fromLocal8Bit(e.what()));
    }
    if (self)
        endCrawl(revision);
}

void SpotifyMemory::endCrawl(int revision) {
    if (revision != m_revision)
        return;
    setLoading(false);
    m_work.reset();
}

} // namespace MirlPlayer
