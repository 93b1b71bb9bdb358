#include "spotify/SpotifyLibrary.h"

#include "FakeSpotifyServer.h"
#include "core/Clock.h"
#include "core/Preferences.h"
#include "core/PrivateFile.h"
#include "support/RawHttpClient.h"

#include <QCoro/QCoroTimer>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QSignalSpy>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QTest>
#include <QUrlQuery>
#include <memory>
#include <sys/stat.h>

using namespace MirlPlayer;
using namespace std::chrono_literals;

namespace {

const QString kClient = QStringLiteral("0123456789abcdef0123456789abcdef");

// The outcome of a coroutine driven to its end by the test's event loop.
template <typename T> struct Outcome {
    std::optional<T> value;
    std::exception_ptr error;
    bool done = false;

    // The words a caller would show, "cancelled" for a cancellation, "" on success.
    QString message() const {
        if (!error)
            return {};
        try {
            std::rethrow_exception(error);
        } catch (const SpotifyError& e) {
            return e.isCancellation() ? QStringLiteral("cancelled") : e.localizedDescription();
        } catch (...) {
            return QStringLiteral("unexpected exception");
        }
    }
};

template <typename T>
QCoro::Task<void> drive(QCoro::Task<T> task, std::shared_ptr<Outcome<T>> out) {
    try {
        out->value = co_await std::move(task);
    } catch (...) {
        out->error = std::current_exception();
    }
    out->done = true;
}

QCoro::Task<void> driveVoid(QCoro::Task<void> task, std::shared_ptr<Outcome<bool>> out) {
    try {
        co_await std::move(task);
        out->value = true;
    } catch (...) {
        out->error = std::current_exception();
    }
    out->done = true;
}

template <typename T> std::shared_ptr<Outcome<T>> start(QCoro::Task<T>&& task) {
    auto out = std::make_shared<Outcome<T>>();
    drive<T>(std::move(task), out);
    return out;
}

std::shared_ptr<Outcome<bool>> start(QCoro::Task<void>&& task) {
    auto out = std::make_shared<Outcome<bool>>();
    driveVoid(std::move(task), out);
    return out;
}

template <typename T> bool finished(const std::shared_ptr<Outcome<T>>& out, int ms = 5000) {
    return QTest::qWaitFor([&] { return out->done; }, ms);
}

// The wait for a request slot, without waiting: the clock jumps to the slot.
QCoro::Task<void> jumpTo(ManualClock* clock, double until) {
    if (until > clock->wallNow())
        clock->advance(until - clock->wallNow());
    co_await QCoro::sleepFor(0ms);
}

// A browser: follows the authorization address through the accounts service's redirect to the
// loopback callback and returns the page it ends on.
struct Browser {
    QNetworkAccessManager nam;
    QByteArray page;
    int status = 0;
    bool done = false;
    void open(const QUrl& url) {
        QNetworkReply* reply = nam.get(QNetworkRequest(url));
        QObject::connect(reply, &QNetworkReply::finished, [this, reply] {
            page = reply->readAll();
            status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
            done = true;
            reply->deleteLater();
        });
    }
};

// A raw connection to the sign-in port.
struct RawClient : MirlTest::RawHttpClient {
    RawClient()
        : RawHttpClient(SpotifyLibrary::callbackPort) {}
};

QByteArray callbackRequest(const QString& query) {
    return "GET /callback?" + query.toUtf8() + " HTTP/1.1\r\nHost: 127.0.0.1:43821\r\n\r\n";
}

int modeOf(const QString& path) {
    struct stat info {};
    if (::stat(QFile::encodeName(path).constData(), &info) != 0)
        return -1;
    return int(info.st_mode & 07777);
}

bool portIsFree() {
    QTcpServer probe;
    return probe.listen(QHostAddress::LocalHost, SpotifyLibrary::callbackPort);
}

} // namespace

class tst_SpotifyLibrary : public QObject {
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<Preferences> m_prefs;
    std::unique_ptr<ManualClock> m_clock;
    std::unique_ptr<FakeSpotifyServer> m_server;
    std::unique_ptr<SpotifyLibrary> m_lib;
    QList<QUrl> m_opened;
    QStringList m_log;

    std::unique_ptr<SpotifyLibrary> makeLibrary(std::optional<QString> clientID = kClient) {
        auto lib = std::make_unique<SpotifyLibrary>(*m_prefs, *m_clock, clientID, true);
        lib->setEndpoints({m_server->apiBase(), m_server->authorizeURL(), m_server->tokenURL()});
        SpotifyTimings timings;
        timings.connectionKillMs = 300;
        timings.requestTimeoutMs = 2000;
        lib->setTimings(timings);
        lib->setBrowserOpener([this](const QUrl& url) { m_opened.append(url); });
        lib->setLogSink([this](const QString& line) { m_log.append(line); });
        lib->setSleeper([clock = m_clock.get()](double until) { return jumpTo(clock, until); });
        lib->setMachineName(QStringLiteral("zed"));
        return lib;
    }

    // A library that was signed in before: the sign-in file holds a refresh token.
    void signedIn() {
        QVERIFY(writePrivateFile(SpotifyLibrary::signInFilePath(),
                                 QJsonDocument(QJsonObject{{kClient, "refresh-0"}}).toJson()));
        m_lib = makeLibrary();
        QVERIFY(m_lib->connected());
    }

    QString oauthState() const {
        return QUrlQuery(m_opened.last()).queryItemValue(QStringLiteral("state"));
    }

    template <typename T> QString run(QCoro::Task<T>&& task) {
        auto out = start(std::move(task));
        if (!finished(out))
            return QStringLiteral("did not finish");
        return out->message();
    }

private Q_SLOTS:
    void init() {
        m_dir = std::make_unique<QTemporaryDir>();
        m_prefs = std::make_unique<Preferences>(m_dir->filePath("prefs.conf"));
        m_clock = std::make_unique<ManualClock>();
        m_server = std::make_unique<FakeSpotifyServer>();
        m_opened.clear();
        m_log.clear();
        QDir(SpotifyLibrary::privateSupportFolder()).removeRecursively();
    }
    void cleanup() {
        m_lib.reset();
        m_server.reset();
        QVERIFY(QTest::qWaitFor(portIsFree, 2000));
    }

    // --- client ID ---

    void clientIDIsTrimmedAndLowered_data() {
        QTest::addColumn<QString>("input");
        QTest::addColumn<bool>("accepted");
        QTest::newRow("pasted with blanks, upper case") << "  0123456789ABCDEF0123456789ABCDEF \n"
                                                        << true;
        QTest::newRow("31 characters") << "0123456789abcdef0123456789abcde" << false;
        QTest::newRow("33 characters") << "0123456789abcdef0123456789abcdef0" << false;
        QTest::newRow("not hex") << "0123456789abcdef0123456789abcdeg" << false;
        QTest::newRow("inner blank") << "0123456789abcdef 123456789abcdef" << false;
        QTest::newRow("empty") << "" << false;
    }
    void clientIDIsTrimmedAndLowered() {
        QFETCH(QString, input);
        QFETCH(bool, accepted);
        m_lib = makeLibrary(QString());
        QCOMPARE(m_lib->setClientID(input), accepted);
        QCOMPARE(m_lib->clientID(), accepted ? kClient : QString());
        QCOMPARE(m_prefs->stringValue("spotifyClientID"), accepted ? kClient : QString());
    }

    // --- sign-in ---

    void signInThroughTheBrowserConnectsAndSurvivesARestart() {
        m_lib = makeLibrary();
        m_lib->beginSignIn();
        QVERIFY(m_lib->connecting());
        QCOMPARE(m_opened.size(), 1);

        const QUrl url = m_opened.first();
        const QUrlQuery query(url);
        QCOMPARE(query.queryItemValue("client_id"), kClient);
        QCOMPARE(query.queryItemValue("redirect_uri", QUrl::FullyDecoded),
                 QStringLiteral("http://127.0.0.1:43821/callback"));
        QCOMPARE(query.queryItemValue("code_challenge_method"), QStringLiteral("S256"));
        QCOMPARE(query.queryItemValue("scope", QUrl::FullyDecoded), SpotifyLibrary::scopes);

        Browser browser;
        browser.open(url);
        QVERIFY(QTest::qWaitFor([&] { return browser.done; }, 5000));
        QCOMPARE(browser.status, 200);
        QCOMPARE(
            browser.page,
            QByteArray("Return to MIRL PRO to finish connecting Spotify. You can close this tab."));
        QTRY_VERIFY(m_lib->connected());
        QVERIFY(!m_lib->connecting());
        QVERIFY(!m_lib->connectionError());
        QVERIFY(portIsFree());

        // The fake accounts service only answers the exchange when the verifier fits the challenge.
        const QUrlQuery form = m_server->requests.last().form();
        QCOMPARE(form.queryItemValue("grant_type"), QStringLiteral("authorization_code"));
        QCOMPARE(form.queryItemValue("code"), m_server->code);
        QVERIFY(m_lib->hasPlaybackScopes());
        QVERIFY(m_lib->grantedScopes()->contains("user-library-modify"));

        const QString path = SpotifyLibrary::signInFilePath();
        QCOMPARE(modeOf(path), 0600);
        QCOMPARE(modeOf(QFileInfo(path).absolutePath()), 0700);
        QCOMPARE(QJsonDocument::fromJson(readFile(path).value()).object(),
                 QJsonObject({{kClient, "refresh-1"}}));

        // A restart is connected from the file alone, with the scopes unknown until a refresh.
        m_lib.reset();
        auto restarted = makeLibrary();
        QVERIFY(restarted->connected());
        QVERIFY(!restarted->grantedScopes());
        QVERIFY(restarted->hasPlaybackScopes());
        QCOMPARE(m_server->requests.size(), 2);
    }

    void refusalInTheBrowserEndsTheFlowWithItsMessage() {
        m_lib = makeLibrary();
        m_lib->beginSignIn();
        RawClient client;
        client.send(callbackRequest("error=access_denied&state=" + oauthState()));
        QVERIFY(client.waitClosed());
        QCOMPARE(client.statusLine(), QByteArray("HTTP/1.1 200 OK"));
        QCOMPARE(m_lib->connectionError(),
                 QStringLiteral("Spotify sign-in was cancelled. You can try again."));
        QVERIFY(!m_lib->connecting());
        QVERIFY(!m_lib->connected());
        QVERIFY(m_server->requests.isEmpty());
        QVERIFY(portIsFree());
    }

    void signInTimesOutAndFreesThePort() {
        m_lib = makeLibrary();
        SpotifyTimings timings;
        timings.signInTimeoutMs = 300;
        timings.connectionKillMs = 3000;
        m_lib->setTimings(timings);
        m_lib->beginSignIn();
        const QString state = oauthState();
        RawClient late; // the consent page was opened before the time-out
        QTRY_VERIFY(!m_lib->connecting());
        QCOMPARE(m_lib->connectionError(),
                 QStringLiteral("Sign-in timed out. Try connecting again."));
        QVERIFY(portIsFree());
        late.send(callbackRequest("code=x&state=" + state));
        QVERIFY(late.waitClosed());
        QCOMPARE(late.statusLine(), QByteArray("HTTP/1.1 400 Bad Request"));
        QVERIFY(!m_lib->connected());
    }

    // --- token answers ---

    void tokenAnswerRules_data() {
        QTest::addColumn<QByteArray>("answer");
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("error");
        QTest::addColumn<double>("expiresAfter");
        QTest::addColumn<QString>("storedToken");
        const QString refused = "Spotify could not connect to MIRL PRO. Please try again. If this "
                                "continues, contact MIRL PRO support.";
        QTest::newRow("no expires_in")
            << QByteArray(R"({"access_token":"a","refresh_token":"new"})") << 200 << "" << 3540.0
            << "new";
        QTest::newRow("expires_in 1000") << QByteArray(R"({"access_token":"a","expires_in":1000})")
                                         << 200 << "" << 940.0 << "refresh-0";
        QTest::newRow("status 500")
            << QByteArray(R"({"access_token":"a"})") << 500 << refused << 0.0 << "refresh-0";
        QTest::newRow("no access token")
            << QByteArray(R"({"refresh_token":"new"})") << 200 << refused << 0.0 << "refresh-0";
    }
    void tokenAnswerRules() {
        QFETCH(QByteArray, answer);
        QFETCH(int, status);
        QFETCH(QString, error);
        QFETCH(double, expiresAfter);
        QFETCH(QString, storedToken);
        signedIn();
        m_server->tokenAnswer = answer;
        m_server->tokenStatus = status;
        const double before = m_clock->wallNow();
        QCOMPARE(run(m_lib->requestToken(
                     {{"grant_type", "refresh_token"}, {"refresh_token", "refresh-0"}},
                     m_lib->generation())),
                 error);
        QCOMPARE(m_lib->hasAccessToken(), error.isEmpty());
        if (error.isEmpty())
            QCOMPARE(m_lib->expiry(), before + expiresAfter);
        QCOMPARE(QJsonDocument::fromJson(readFile(SpotifyLibrary::signInFilePath()).value())
                     .object()
                     .value(kClient)
                     .toString(),
                 storedToken);
        QVERIFY(m_lib->connected()); // a failed refresh does not sign out
    }

    // --- the request path ---

    void statusesMapToTheirWords_data() {
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("message");
        QTest::newRow("200") << 200 << "";
        QTest::newRow("403")
            << 403
            << "Spotify refused this. If it keeps happening, open your app at the "
               "Spotify Developer Dashboard → User Management and add the email of "
               "your Spotify account. Spotify Premium is required for your own app.";
        QTest::newRow("401") << 401
                             << "Your Spotify session expired. Retry, or reconnect your account.";
    }
    void statusesMapToTheirWords() {
        QFETCH(int, status);
        QFETCH(QString, message);
        signedIn();
        m_server->route("GET /v1/me/player", {status, {}, {}, 0});
        QCOMPARE(run(m_lib->request("me/player", "GET", std::nullopt, std::nullopt)), message);
        const auto sent = m_server->apiRequests();
        QCOMPARE(sent.size(), 1);
        QCOMPARE(sent[0].headers.value("authorization"), QByteArray("Bearer access-1"));
        QCOMPARE(m_server->refreshCount, 1);
        QCOMPARE(m_lib->hasAccessToken(), status != 401);
        QVERIFY(m_lib->connected());
    }

    void expiredSessionRefreshesOnTheNextRequestOnly() {
        signedIn();
        m_server->route("GET /v1/me", {401, {}, {}, 0});
        m_server->routeFixture("GET /v1/me", "me.json");
        QVERIFY(!run(m_lib->getJSON("me")).isEmpty());
        QCOMPARE(m_server->refreshCount, 1);
        QCOMPARE(m_server->apiRequestCount(), 1); // no automatic second attempt
        QCOMPARE(run(m_lib->getJSON("me")), QString());
        QCOMPARE(m_server->refreshCount, 2);
        QCOMPARE(m_server->apiRequests().last().headers.value("authorization"),
                 QByteArray("Bearer access-2"));
    }

    void addressesOutsideTheWebAPINeverSeeTheToken_data() {
        QTest::addColumn<QString>("address");
        QTest::newRow("other host") << "https://evil.example/v1/me";
        QTest::newRow("other port") << "http://127.0.0.1:1/v1/me";
        QTest::newRow("outside v1") << "http://127.0.0.1:PORT/v2/me";
        QTest::newRow("host by another name") << "http://localhost:PORT/v1/me";
    }
    void addressesOutsideTheWebAPINeverSeeTheToken() {
        QFETCH(QString, address);
        signedIn();
        address.replace("PORT", QString::number(m_server->base().port()));
        QCOMPARE(run(m_lib->getJSON(address)), QStringLiteral("Invalid Spotify library address."));
        QCOMPARE(m_server->apiRequestCount(), 0);
        QCOMPARE(m_server->connections, 1); // the token refresh, nothing else
    }

    // A redirect is an answer like any other; its target never sees a token.
    void redirectsAreNotFollowed_data() {
        QTest::addColumn<bool>("tokenRequest");
        QTest::newRow("Web API") << false;
        QTest::newRow("token endpoint") << true;
    }
    void redirectsAreNotFollowed() {
        QFETCH(bool, tokenRequest);
        FakeSpotifyServer elsewhere;
        signedIn();
        if (tokenRequest) {
            m_server->tokenStatus = 302;
            m_server->tokenHeaders = {{"Location", elsewhere.tokenURL().toEncoded()}};
            QCOMPARE(run(m_lib->getJSON("me")),
                     QStringLiteral("Spotify could not connect to MIRL PRO. Please try again. If "
                                    "this continues, contact MIRL PRO support."));
        } else {
            m_server->route(
                "GET /v1/me",
                {302,
                 {},
                 {{"Location",
                   "http://127.0.0.1:" + QByteArray::number(elsewhere.base().port()) + "/v1/me"}},
                 0});
            QCOMPARE(run(m_lib->getJSON("me")),
                     QStringLiteral("Spotify couldn’t load this content (302). Please try again."));
        }
        QTest::qWait(50);
        QCOMPARE(elsewhere.connections, 0);
    }

    void rateLimitPausesAllRequests_data() {
        QTest::addColumn<QByteArray>("retryAfter"); // "-" for no header
        QTest::addColumn<double>("pause");
        QTest::newRow("seconds") << QByteArray("120") << 120.0;
        QTest::newRow("zero is one second") << QByteArray("0") << 1.0;
        QTest::newRow("no header") << QByteArray("-") << 30.0;
        QTest::newRow("garbage") << QByteArray("soon") << 30.0;
        QTest::newRow("a week is a day") << QByteArray("604800") << 86400.0;
    }
    void rateLimitPausesAllRequests() {
        QFETCH(QByteArray, retryAfter);
        QFETCH(double, pause);
        signedIn();
        FakeSpotifyServer::Reply limited{
            429, R"({"error":{"status":429,"message":"API rate limit exceeded"}})", {}, 0};
        if (retryAfter != "-")
            limited.headers.append({"Retry-After", retryAfter});
        m_server->route("GET /v1/me", limited);
        const QString message = run(m_lib->getJSON("me"));
        const double moment = m_prefs->doubleValue("spotifyRetryAfter." + kClient, 0);
        QVERIFY(qAbs(moment - (m_clock->wallNow() + pause)) < 1e-6);
        QCOMPARE(message, m_lib->rateLimitMessage());
        QVERIFY(message.startsWith("Spotify has temporarily limited requests. Try again after "));
        QVERIFY(message.endsWith(". MIRL will pause requests until then."));
        QCOMPARE(m_log.size(), 1);
        QVERIFY(m_log[0].startsWith("Spotify API rate limited; requests paused until "));

        // While the pause lasts nothing is sent, not even a refresh.
        QCOMPARE(run(m_lib->getJSON("me")), m_lib->rateLimitMessage());
        QCOMPARE(m_server->apiRequestCount(), 1);
        m_clock->advance(pause + 0.01);
        m_server->clearRoute("GET /v1/me");
        m_server->routeFixture("GET /v1/me", "me.json");
        QCOMPARE(run(m_lib->getJSON("me")), QString());
    }

    void pauseNeverGetsShorterAndSurvivesARestart() {
        signedIn();
        m_server->route("GET /v1/me", {429, {}, {{"Retry-After", "120"}}, 0});
        m_server->route("GET /v1/me", {429, {}, {{"Retry-After", "5"}}, 0});
        auto first = start(m_lib->getJSON("me"));
        auto second = start(m_lib->getJSON("me"));
        QVERIFY(finished(first) && finished(second));
        QCOMPARE(m_server->apiRequestCount(), 2);
        const double moment = m_lib->pauseMoment();
        QVERIFY(moment >= m_clock->wallNow() + 119.0);

        // Quitting is no way around the pause.
        m_lib.reset();
        m_lib = makeLibrary();
        const int requests = int(m_server->requests.size());
        QCOMPARE(run(m_lib->getJSON("me")), m_lib->rateLimitMessage());
        QCOMPARE(m_server->requests.size(), requests);
        QCOMPARE(m_lib->pauseMoment(), moment);
    }

    void storedPauseBeyondADayCountsAsADay() {
        m_prefs->setValue("spotifyRetryAfter." + kClient, 1e300);
        signedIn();
        QCOMPARE(m_lib->pauseMoment(), m_clock->wallNow() + 86400.0);
        QCOMPARE(run(m_lib->getJSON("me")), m_lib->rateLimitMessage());
    }

    void tenRequestsWithAnExpiredTokenShareOneRefresh() {
        signedIn();
        m_server->routeFixture("GET /v1/me/player/devices", "devices.json");
        QCOMPARE(run(m_lib->getJSON("me/player/devices")), QString());
        QCOMPARE(m_server->refreshCount, 1);
        m_clock->advance(3600.0); // the token has expired
        m_server->requests.clear();
        m_server->tokenDelayMs = 300;
        QList<std::shared_ptr<Outcome<QJsonObject>>> outs;
        for (int i = 0; i < 5; ++i)
            outs.append(start(m_lib->getJSON("me/player/devices")));
        // The rest join while the refresh is on the wire.
        QTRY_COMPARE(m_server->refreshCount, 2);
        for (int i = 0; i < 5; ++i)
            outs.append(start(m_lib->getJSON("me/player/devices")));
        for (auto& out : outs) {
            QVERIFY(finished(out));
            QCOMPARE(out->message(), QString());
        }
        QCOMPARE(m_server->refreshCount, 2);
        QCOMPARE(m_server->apiRequestCount(), 10);
        for (const auto& sent : m_server->apiRequests())
            QCOMPARE(sent.headers.value("authorization"), QByteArray("Bearer access-2"));
        // The booked slots kept their distance (the first request's slot has aged out).
        QCOMPARE(m_lib->budget().booked.size(), size_t(10));
        QVERIFY(m_lib->budget().booked.back() - m_lib->budget().booked.front() >= 9 * 0.25 - 1e-9);
    }

    void failedRefreshReachesEveryWaiterAndIsForgotten() {
        signedIn();
        m_server->tokenStatus = 400;
        m_server->tokenDelayMs = 50;
        auto a = start(m_lib->getJSON("me"));
        auto b = start(m_lib->getJSON("me"));
        QVERIFY(finished(a) && finished(b));
        const QString refused = "Spotify could not connect to MIRL PRO. Please try again. If this "
                                "continues, contact MIRL PRO support.";
        QCOMPARE(a->message(), refused);
        QCOMPARE(b->message(), refused);
        QCOMPARE(m_server->refreshCount, 1);
        QVERIFY(m_lib->connected());
        m_server->tokenStatus = 200;
        m_server->routeFixture("GET /v1/me", "me.json");
        QCOMPARE(run(m_lib->getJSON("me")), QString());
        QCOMPARE(m_server->refreshCount, 2);
    }

    void signOutWhileWaitingForASlotCancelsWithoutTraffic() {
        signedIn();
        m_server->routeFixture("GET /v1/me", "me.json");
        QCOMPARE(run(m_lib->getJSON("me")), QString()); // holds a token now
        m_lib->setSleeper({});                          // wait for real, as the program does
        for (int i = 0; i < 30; ++i)
            m_lib->budget().reserve(m_clock->wallNow(), false);
        const int requests = int(m_server->requests.size());
        auto waiting = start(m_lib->getJSON("me"));
        QTest::qWait(50);
        QVERIFY(!waiting->done);
        m_lib->disconnectAccount();
        QVERIFY(finished(waiting, 1000));
        QCOMPARE(waiting->message(), QStringLiteral("cancelled"));
        QCOMPARE(m_server->requests.size(), requests);
        QVERIFY(!QFile::exists(SpotifyLibrary::signInFilePath()));
        QVERIFY(!m_lib->connected());
    }

    void signOutDuringARefreshCancels() {
        signedIn();
        m_server->tokenDelayMs = 300;
        auto waiting = start(m_lib->getJSON("me"));
        QTRY_COMPARE(m_server->refreshCount, 1);
        m_lib->resetSession();
        // A second flight starts while the first is still landing: each waiter ends once.
        auto next = start(m_lib->getJSON("me"));
        auto joined = start(m_lib->getJSON("me"));
        QVERIFY(finished(waiting) && finished(next) && finished(joined));
        QCOMPARE(waiting->message(), QStringLiteral("cancelled"));
        QCOMPARE(joined->message(), next->message());
        QCOMPARE(m_server->refreshCount, 2);
        QVERIFY(!m_lib->hasAccessToken());
        QCOMPARE(m_server->apiRequestCount(), 0);
    }

    // --- devices ---

    void thisComputerIsFound_data() {
        QTest::addColumn<QString>("machine");
        QTest::addColumn<QString>("playing"); // empty: nothing playing
        QTest::addColumn<QString>("devices");
        QTest::addColumn<QString>("expected"); // empty: none
        QTest::addColumn<QString>("logLine");
        QTest::newRow("by name, typographic apostrophe")
            << " ann's thinkpad "
            << ""
            << "devices.json"
            << "5fbb3ba6aa454b5534c4ba43a8c7e8e45a63ad0e"
            << "Spotify Connect: this Mac is “Ann’s ThinkPad” (matched by name)";
        QTest::newRow("by the playing song before the name")
            << "Ann's ThinkPad"
            << "spotify:track:6rqhFgbbKwnb9MLmUQDhG6"
            << "devices.json"
            << "a1b2c3d4e5f60718293a4b5c6d7e8f9012345678"
            << "Spotify Connect: this Mac is “Office Desktop” (matched by the playing song)";
        QTest::newRow("unknown name, nothing playing")
            << "zed"
            << ""
            << "devices.json"
            << ""
            << "Spotify Connect: couldn't tell which device is this Mac. Devices: Ann’s ThinkPad "
               "(Computer), Office Desktop (Computer, active), Pixel 8 (Smartphone); this Mac: zed";
        QTest::newRow("the only computer")
            << "zed"
            << ""
            << R"({"devices":[{"id":"c1","name":"Den","type":"computer"},{"id":"p","type":"Smartphone"}]})"
            << "c1"
            << "Spotify Connect: using the only computer, “Den”";
        QTest::newRow("no devices")
            << ""
            << ""
            << R"({"devices":"none"})"
            << ""
            << "Spotify Connect: couldn't tell which device is this Mac. Devices: ; this Mac: ?";
    }
    void thisComputerIsFound() {
        QFETCH(QString, machine);
        QFETCH(QString, playing);
        QFETCH(QString, devices);
        QFETCH(QString, expected);
        QFETCH(QString, logLine);
        signedIn();
        m_lib->setMachineName(machine);
        if (devices.endsWith(".json"))
            m_server->routeFixture("GET /v1/me/player/devices", devices);
        else
            m_server->routeJSON("GET /v1/me/player/devices", devices.toUtf8());
        m_server->routeFixture("GET /v1/me/player", "player.json");
        auto out =
            start(m_lib->resolveThisMac(playing.isEmpty() ? std::nullopt : std::optional(playing)));
        QVERIFY(finished(out));
        QCOMPARE(out->message(), QString());
        QCOMPARE(out->value->value_or(QString()), expected);
        QCOMPARE(m_log, QStringList{logLine});
    }
};

QTEST_GUILESS_MAIN(tst_SpotifyLibrary)
#include "tst_SpotifyLibrary.moc"
