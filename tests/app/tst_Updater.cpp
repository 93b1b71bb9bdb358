#include "app/Updater.h"
#include "core/Preferences.h"
#include "spotify/FakeSpotifyServer.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>
#include <sodium.h>

using namespace MirlPlayer;

namespace {

// The update window, answering "Install Update" or "Later" at once.
struct RecordingDriver : UpdateUserDriver {
    bool install = false;
    int found = 0;
    QStringList errors;
    void showUpdateFound(const AppcastItem&, std::function<void(bool)> reply) override {
        ++found;
        reply(install);
    }
    void showDownloading(const AppcastItem&) override {}
    void showUpToDate(const QString&) override {}
    void showError(const QString& message) override { errors << message; }
};

const char* const feedTemplate =
    "<?xml version=\"1.0\"?><rss version=\"2.0\" xmlns:sparkle=\"http://www.andymatuschak.org/"
    "xml-namespaces/sparkle\"><channel><item><sparkle:version>%1</sparkle:version><enclosure "
    "url=\"%2\" length=\"%3\" sparkle:edSignature=\"%4\"/></item></channel></rss>";

QByteArray sign(const QByteArray& bytes, const QByteArray& secretKey) {
    QByteArray signature(crypto_sign_BYTES, 0);
    crypto_sign_detached(reinterpret_cast<unsigned char*>(signature.data()), nullptr,
                         reinterpret_cast<const unsigned char*>(bytes.constData()), bytes.size(),
                         reinterpret_cast<const unsigned char*>(secretKey.constData()));
    return signature;
}

} // namespace

class tst_Updater : public QObject {
    Q_OBJECT
    QByteArray m_public = QByteArray(crypto_sign_PUBLICKEYBYTES, 0);
    QByteArray m_secret = QByteArray(crypto_sign_SECRETKEYBYTES, 0);
    const QByteArray m_package = QByteArray(70000, 'p') + "the new version";

private Q_SLOTS:
    void initTestCase() {
        QVERIFY(sodium_init() >= 0);
        crypto_sign_keypair(reinterpret_cast<unsigned char*>(m_public.data()),
                            reinterpret_cast<unsigned char*>(m_secret.data()));
    }

    void updateFromFeed_data() {
        QTest::addColumn<QString>("version");
        QTest::addColumn<QString>("signature"); // good, bad or none
        QTest::addColumn<int>("lengthOff");     // announced length minus the real one
        QTest::addColumn<QByteArray>("feedOverride");
        QTest::addColumn<int>("asked"); // 0 scheduled, 1 scheduled in focus, 2 the user installs
        QTest::addColumn<QString>("pending");
        QTest::addColumn<bool>("kept"); // the verified file stays in the download folder
        QTest::addColumn<int>("requests");
        const QByteArray none;
        QTest::newRow("newer, signed") << "0.2.0"
                                       << "good" << 0 << none << 0 << "0.2.0" << true << 2;
        QTest::newRow("found while in front") << "0.2.0"
                                              << "good" << 0 << none << 1 << "" << true << 2;
        QTest::newRow("installed by the user") << "0.2.0"
                                               << "good" << 0 << none << 2 << "" << true << 2;
        QTest::newRow("bad signature") << "0.2.0"
                                       << "bad" << 0 << none << 0 << "" << false << 2;
        QTest::newRow("bad signature, asked") << "0.2.0"
                                              << "bad" << 0 << none << 2 << "" << false << 2;
        QTest::newRow("no signature") << "0.2.0"
                                      << "none" << 0 << none << 0 << "" << false << 1;
        QTest::newRow("same version") << "0.1.0"
                                      << "good" << 0 << none << 0 << "" << false << 1;
        QTest::newRow("shorter than announced") << "0.2.0"
                                                << "good" << -1 << none << 0 << "" << false << 2;
        QTest::newRow("longer than announced") << "0.2.0"
                                               << "good" << 9 << none << 0 << "" << false << 2;
        QTest::newRow("malformed")
            << "0.2.0"
            << "good" << 0 << QByteArray("<rss><channel><item>") << 0 << "" << false << 1;
        QTest::newRow("huge") << "0.2.0"
                              << "good" << 0 << QByteArray(2 << 20, ' ') << 0 << "" << false << 1;
        QTest::newRow("redirect off HTTPS")
            << "0.2.0"
            << "good" << 0 << QByteArray("redirect") << 0 << "" << false << 1;
    }
    void updateFromFeed() {
        QFETCH(QString, version);
        QFETCH(QString, signature);
        QFETCH(int, lengthOff);
        QFETCH(QByteArray, feedOverride);
        QFETCH(int, asked);
        QFETCH(QString, pending);
        QFETCH(bool, kept);
        QFETCH(int, requests);
        FakeSpotifyServer server;
        const QByteArray signed_ = signature == u"bad"    ? sign("other bytes", m_secret)
                                   : signature == u"good" ? sign(m_package, m_secret)
                                                          : QByteArray();
        const QString feed = QString::fromLatin1(feedTemplate);
        const QByteArray body =
            !feedOverride.isEmpty() && feedOverride != "redirect"
                ? feedOverride
                : feed.arg(version, server.base().toString() + QStringLiteral("pkg/mirl_0.2.0.deb"))
                      .arg(m_package.size() - lengthOff)
                      .arg(QString::fromLatin1(signed_.toBase64()))
                      .toUtf8();
        if (feedOverride == "redirect")
            server.route(QStringLiteral("GET /appcast.xml"),
                         {302, {}, {{"Location", "http://example.com/appcast.xml"}}, 0});
        else
            server.route(QStringLiteral("GET /appcast.xml"), {200, body, {}, 0});
        server.route(QStringLiteral("GET /pkg/mirl_0.2.0.deb"), {200, m_package, {}, 0});

        QTemporaryDir dir;
        Preferences prefs(dir.filePath(QStringLiteral("prefs.conf")));
        prefs.setValue(QStringLiteral("automaticallyDownloadsUpdates"), true);
        RecordingDriver driver;
        driver.install = asked == 2;
        QList<QUrl> installed;
        UpdateConfig config{server.base().resolved(QUrl(QStringLiteral("/appcast.xml"))),
                            m_public,
                            QStringLiteral("0.1.0"),
                            QStringLiteral("0.1.0 (?)"),
                            dir.filePath(QStringLiteral("updates")),
                            true,
                            [asked] { return asked == 1; },
                            [&installed](const QUrl& file) { return installed << file, true; }};
        Updater updater(prefs);
        updater.start(config, &driver);
        if (asked == 2)
            updater.checkForUpdates();
        else
            updater.controller()->checkForUpdatesInBackground();
        QVERIFY(!updater.canCheck());
        QTRY_VERIFY(updater.canCheck());

        QCOMPARE(updater.pendingVersion(), pending);
        QCOMPARE(server.requests.size(), requests);
        const QString file = dir.filePath(QStringLiteral("updates/mirl_0.2.0.deb"));
        QCOMPARE(QFile::exists(file), kept);
        QCOMPARE(QDir(dir.filePath(QStringLiteral("updates"))).entryList(QDir::Files).size(),
                 kept ? 1 : 0);
        QCOMPARE(updater.controller()->verifiedFile(), kept ? file : QString());
        QCOMPARE(driver.found, asked == 0 ? 0 : 1);
        QCOMPARE(installed,
                 asked == 2 && kept ? QList<QUrl>{QUrl::fromLocalFile(file)} : QList<QUrl>{});
        // The user hears of a refusal they asked for; a scheduled one is only noted.
        QCOMPARE(driver.errors.size(), asked == 2 && !kept ? 1 : 0);
        QCOMPARE(updater.lastProblem().isEmpty(), kept || version == u"0.1.0");
        QCOMPARE(updater.lastCheck().isValid(), feedOverride.isEmpty());
    }

    void noUpdaterWithoutASecureSignedFeed_data() {
        QTest::addColumn<QString>("feed");
        QTest::addColumn<QByteArray>("key");
        QTest::newRow("no feed") << QString() << QByteArray(32, 1);
        QTest::newRow("plain HTTP") << "http://example.com/appcast.xml" << QByteArray(32, 1);
        QTest::newRow("no key") << "https://example.com/appcast.xml" << QByteArray();
    }
    void noUpdaterWithoutASecureSignedFeed() {
        QFETCH(QString, feed);
        QFETCH(QByteArray, key);
        QTemporaryDir dir;
        Preferences prefs(dir.filePath(QStringLiteral("prefs.conf")));
        Updater updater(prefs);
        UpdateConfig config;
        config.feedURL = QUrl(feed);
        config.publicKey = key;
        updater.start(config);
        QVERIFY(!updater.available());
        QCOMPARE(updater.statusLine(), QStringLiteral("Updates aren't set up in this build."));
    }
};

QTEST_GUILESS_MAIN(tst_Updater)
#include "tst_Updater.moc"
