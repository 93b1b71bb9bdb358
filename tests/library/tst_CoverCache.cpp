#include "library/CoverCache.h"
#include "library/CoverImageProvider.h"
#include "spotify/FakeSpotifyServer.h"

#include <QBuffer>
#include <QCoro/QCoroTask>
#include <QQuickTextureFactory>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace MirlPlayer;

namespace {

QByteArray png(QColor colour) {
    QImage image(64, 64, QImage::Format_RGB32);
    image.fill(colour);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return bytes;
}

struct Asked {
    int answered = 0;
    int images = 0;
};

QCoro::Task<void> ask(CoverCache* cache, QUrl url, std::shared_ptr<Asked> asked) {
    const std::optional<QImage> image = co_await cache->coverImage(url);
    asked->images += image && !image->isNull();
    ++asked->answered;
}

} // namespace

class tst_CoverCache : public QObject {
    Q_OBJECT

    QTemporaryDir m_dir;
    FakeSpotifyServer m_server;

    QUrl cover(const QString& name) const {
        return m_server.base().resolved(QUrl(QStringLiteral("/image/") + name));
    }
    int asked(const QString& name) const {
        int count = 0;
        for (const auto& request : m_server.requests)
            count += request.path == u"/image/" + name;
        return count;
    }
    // Many rows at once; returns how many got an image.
    int rows(CoverCache& cache, const QStringList& names, int perName) {
        auto out = std::make_shared<Asked>();
        for (int i = 0; i < perName; ++i)
            for (const QString& name : names)
                ask(&cache, cover(name), out);
        const int expected = int(names.size()) * perName;
        if (!QTest::qWaitFor([&] { return out->answered == expected; }, 5000))
            return -1;
        return out->images;
    }

private Q_SLOTS:
    void initTestCase() {
        const QList<std::pair<QByteArray, QByteArray>> headers{
            {"Content-Type", "image/png"}, {"Cache-Control", "max-age=31536000"}};
        m_server.route(QStringLiteral("GET /image/a"), {200, png(Qt::red), headers, 50});
        m_server.route(QStringLiteral("GET /image/b"), {200, png(Qt::blue), headers, 50});
        m_server.route(QStringLiteral("GET /image/broken"), {200, "not an image", headers, 0});
    }

    // Each address is fetched and decoded once for any number of rows, and a restart reads the
    // disk instead of the network.
    void coversFetchedOnceForManyRows() {
        const QString folder = m_dir.filePath(QStringLiteral("images"));
        {
            CoverCache cache(folder);
            QCOMPARE(rows(cache, {"a", "b"}, 20), 40);
            QCOMPARE(rows(cache, {"a", "b"}, 5), 10);
            QVERIFY(cache.cachedImage(cover("a")));
        }
        CoverCache restarted(folder);
        QCOMPARE(rows(restarted, {"a"}, 3), 3);
        QCOMPARE(asked("a"), 1);
        QCOMPARE(asked("b"), 1);
    }

    // QML asks through the provider; a failed cover answers with an empty image.
    void providerAnswersScaledCovers_data() {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QSize>("size");
        QTest::newRow("a cover, scaled") << "b" << QSize(16, 16);
        QTest::newRow("no image") << "broken" << QSize();
    }
    void providerAnswersScaledCovers() {
        QFETCH(QString, name);
        QFETCH(QSize, size);
        CoverCache cache(m_dir.filePath(QStringLiteral("provider")));
        cache.setRetryDelay(10);
        CoverImageProvider provider(cache);
        const QString id = QString::fromUtf8(QUrl::toPercentEncoding(cover(name).toString()));
        std::unique_ptr<QQuickImageResponse> response(
            provider.requestImageResponse(id, QSize(16, 16)));
        QSignalSpy finished(response.get(), &QQuickImageResponse::finished);
        QVERIFY(finished.wait(3000));
        std::unique_ptr<QQuickTextureFactory> texture(response->textureFactory());
        QCOMPARE(texture ? texture->image().size() : QSize(), size);
        QCOMPARE(response->errorString().isEmpty(), size.isValid());
    }

    // A body that is no image is tried twice and gives none, and nothing remembers the failure.
    void brokenCoverIsTriedAgainLater() {
        CoverCache cache(m_dir.filePath(QStringLiteral("broken")));
        cache.setRetryDelay(10);
        const int before = asked("broken");
        QCOMPARE(rows(cache, {"broken"}, 4), 0);
        QCOMPARE(asked("broken"), before + 2);
        QCOMPARE(rows(cache, {"broken"}, 1), 0);
        QCOMPARE(asked("broken"), before + 4);
        QVERIFY(!cache.cachedImage(cover("broken")));
    }
};

QTEST_MAIN(tst_CoverCache)
#include "tst_CoverCache.moc"
