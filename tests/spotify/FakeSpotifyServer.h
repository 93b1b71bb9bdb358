#pragma once

#include <QByteArray>
#include <QList>
#include <QMap>
#include <QObject>
#include <QString>
#include <QTcpServer>
#include <QUrl>
#include <QUrlQuery>
#include <functional>

// An HTTP server on 127.0.0.1 that plays both Spotify's accounts service and the Web API from
// JSON fixtures. Every request is recorded; answers are queued per route, the last one repeats.
class FakeSpotifyServer : public QObject {
    Q_OBJECT
public:
    struct Request {
        QByteArray method;
        QByteArray target; // as sent, with the query
        QString path;      // decoded
        QUrlQuery query;
        QMap<QByteArray, QByteArray> headers; // lower-case names
        QByteArray body;
        QUrlQuery form() const { return QUrlQuery(QString::fromUtf8(body)); }
    };
    struct Reply {
        int status = 200;
        QByteArray body;
        QList<std::pair<QByteArray, QByteArray>> headers;
        int delayMs = 0;
    };

    explicit FakeSpotifyServer(QObject* parent = nullptr);

    QUrl base() const;
    QUrl apiBase() const { return base().resolved(QUrl(QStringLiteral("/v1/"))); }
    QUrl authorizeURL() const { return base().resolved(QUrl(QStringLiteral("/authorize"))); }
    QUrl tokenURL() const { return base().resolved(QUrl(QStringLiteral("/api/token"))); }

    // Answers for "METHOD /path" (the path without its query).
    void route(const QString& methodAndPath, Reply reply);
    // Forgets the answers queued for a route.
    void clearRoute(const QString& methodAndPath) { m_routes.remove(methodAndPath); }
    void routeJSON(const QString& methodAndPath, const QByteArray& json, int status = 200);
    void routeFixture(const QString& methodAndPath, const QString& fixtureName);
    static QByteArray fixture(const QString& name);

    // The accounts service. `code` is what /authorize hands out; the token endpoint accepts it only
    // with the verifier whose challenge came with the authorization.
    QString code = QStringLiteral("auth-code-1");
    QString clientID;
    QString challenge;
    int refreshCount = 0;
    int tokenDelayMs = 0;
    // Answer of the token endpoint for a valid exchange or refresh; "%1" becomes a counter.
    QByteArray tokenAnswer =
        R"({"access_token":"access-%1","token_type":"Bearer","expires_in":3600,"refresh_token":"refresh-%1","scope":"user-library-read user-library-modify user-read-playback-state user-modify-playback-state"})";
    int tokenStatus = 200;
    QList<std::pair<QByteArray, QByteArray>> tokenHeaders;

    QList<Request> requests;
    int connections = 0; // accepted, whether or not a request could be read
    QList<Request> apiRequests() const;
    int apiRequestCount() const { return int(apiRequests().size()); }

private:
    void serve(class QTcpSocket* socket, const Request& request);
    Reply answerFor(const Request& request);

    QTcpServer m_server;
    QMap<QString, QList<Reply>> m_routes;
    int m_tokenCounter = 0;
};
