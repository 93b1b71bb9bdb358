#include "spotify/SpotifyLoopbackServer.h"
#include "support/RawHttpClient.h"

#include <QHostAddress>
#include <QTcpSocket>
#include <QTest>
#include <memory>

using namespace MirlPlayer;

namespace {

using Client = MirlTest::RawHttpClient;

} // namespace

class tst_SpotifyLoopbackServer : public QObject {
    Q_OBJECT

    std::unique_ptr<SpotifyLoopbackServer> m_server;
    QList<QByteArray> m_seen;
    bool m_verdict = true;

private Q_SLOTS:
    void init() {
        m_seen.clear();
        m_verdict = true;
        m_server = std::make_unique<SpotifyLoopbackServer>();
        m_server->setHandler([this](const QByteArray& request) {
            m_seen.append(request);
            return m_verdict;
        });
        m_server->setKillInterval(300);
        QVERIFY(m_server->listen(0));
    }
    void cleanup() { m_server.reset(); }

    void listensOnTheLoopbackAddressOnly() {
        QTcpSocket other;
        // Whatever other addresses the machine has, none of them reaches the listener.
        other.connectToHost(QHostAddress::LocalHostIPv6, m_server->port());
        QVERIFY(!other.waitForConnected(500));
    }

    void completeRequestGetsTheVerdictsAnswer_data() {
        QTest::addColumn<bool>("accepted");
        QTest::addColumn<QByteArray>("answer");
        const QByteArray ok =
            "Return to MIRL PRO to finish connecting Spotify. You can close this tab.";
        const QByteArray bad = "Invalid sign-in callback. Return to MIRL PRO and try again.";
        QTest::newRow("accepted")
            << true
            << "HTTP/1.1 200 OK\r\nContent-Type: text/plain; charset=utf-8\r\nContent-Length: " +
                   QByteArray::number(ok.size()) + "\r\nConnection: close\r\n\r\n" + ok;
        QTest::newRow("rejected")
            << false
            << "HTTP/1.1 400 Bad Request\r\nContent-Type: text/plain; charset=utf-8\r\n"
               "Content-Length: " +
                   QByteArray::number(bad.size()) + "\r\nConnection: close\r\n\r\n" + bad;
    }
    void completeRequestGetsTheVerdictsAnswer() {
        QFETCH(bool, accepted);
        QFETCH(QByteArray, answer);
        m_verdict = accepted;
        Client client(m_server->port());
        client.send("GET /callback?code=1&state=2 HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n");
        QVERIFY(client.waitClosed());
        QCOMPARE(client.received, answer);
        QCOMPARE(m_seen.size(), 1);
    }

    void headerInPiecesIsAssembled() {
        Client client(m_server->port());
        client.send("GET /callback?st");
        QTest::qWait(20);
        client.send("ate=x HTTP/1.1\r\n");
        QTest::qWait(20);
        client.send("\r\n");
        QVERIFY(client.waitClosed());
        QCOMPARE(m_seen, QList<QByteArray>{"GET /callback?state=x HTTP/1.1\r\n\r\n"});
        QVERIFY(client.received.startsWith("HTTP/1.1 200 OK"));
    }

    void connectionsThatNeverCompleteAreClosedWithoutAnswer_data() {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<bool>("halfClose");
        QTest::newRow("one byte over the limit") << QByteArray(16385, 'A') << false;
        QTest::newRow("limit reached, header end after it") << QByteArray(16384, 'A') + "\r\n\r\n"
                                                            << false;
        QTest::newRow("stalled header") << QByteArray("GET /callback?code=1 HTTP/1.1\r\n") << false;
        QTest::newRow("silent client") << QByteArray() << false;
        QTest::newRow("stream ends early") << QByteArray("GET /callback HTTP/1.1\r\n") << true;
    }
    void connectionsThatNeverCompleteAreClosedWithoutAnswer() {
        QFETCH(QByteArray, bytes);
        QFETCH(bool, halfClose);
        Client client(m_server->port());
        client.send(bytes);
        if (halfClose)
            client.socket->disconnectFromHost();
        QVERIFY(client.waitClosed());
        QCOMPARE(client.received, QByteArray());
        QVERIFY(m_seen.isEmpty());
    }

    void requestFillingTheLimitExactlyIsAnswered() {
        QByteArray request = "GET /x HTTP/1.1\r\nX-Pad: ";
        request += QByteArray(16384 - request.size() - 4, 'p');
        request += "\r\n\r\n";
        QCOMPARE(request.size(), 16384);
        Client client(m_server->port());
        client.send(request);
        QVERIFY(client.waitClosed());
        QVERIFY(client.received.startsWith("HTTP/1.1 200 OK"));
        QCOMPARE(m_seen.size(), 1);
    }

    void garbageWithAHeaderEndIsJudgedAndAnswered() {
        m_verdict = false;
        Client client(m_server->port());
        static const char garbage[] = "\xff\xfe\x00garbage\r\n\r\n";
        client.send(QByteArray(garbage, sizeof(garbage) - 1));
        QVERIFY(client.waitClosed());
        QVERIFY(client.received.startsWith("HTTP/1.1 400 Bad Request"));
    }

    void closingFreesThePortButLetsAnAcceptedConnectionFinish() {
        const quint16 port = m_server->port();
        Client client(port);
        QTest::qWait(20); // let the server accept it
        m_server->close();
        QVERIFY(!m_server->isListening());
        client.send("GET /late HTTP/1.1\r\n\r\n");
        QVERIFY(client.waitClosed());
        QVERIFY(client.received.startsWith("HTTP/1.1 200 OK"));
        QTcpServer again;
        QVERIFY(again.listen(QHostAddress::LocalHost, port));
    }
};

QTEST_GUILESS_MAIN(tst_SpotifyLoopbackServer)
#include "tst_SpotifyLoopbackServer.moc"
