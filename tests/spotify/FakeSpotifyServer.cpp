#include "FakeSpotifyServer.h"

#include <QCryptographicHash>
#include <QFile>
#include <QTcpSocket>
#include <QTimer>
#include <memory>

FakeSpotifyServer::FakeSpotifyServer(QObject* parent)
    : QObject(parent) {
    m_server.listen(QHostAddress::LocalHost, 0);
    connect(&m_server, &QTcpServer::newConnection, this, [this] {
        while (QTcpSocket* socket = m_server.nextPendingConnection()) {
            ++connections;
            auto buffer = std::make_shared<QByteArray>();
            connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
            connect(socket, &QTcpSocket::readyRead, socket, [this, socket, buffer] {
                *buffer += socket->readAll();
                const qsizetype end = buffer->indexOf("\r\n\r\n");
                if (end < 0)
                    return;
                Request request;
                const QList<QByteArray> lines = buffer->left(end).split('\n');
                const QList<QByteArray> first = lines.value(0).trimmed().split(' ');
                request.method = first.value(0);
                request.target = first.value(1);
                qsizetype length = 0;
                for (qsizetype i = 1; i < lines.size(); ++i) {
                    const qsizetype colon = lines[i].indexOf(':');
                    if (colon < 0)
                        continue;
                    const QByteArray name = lines[i].left(colon).trimmed().toLower();
                    request.headers.insert(name, lines[i].mid(colon + 1).trimmed());
                    if (name == "content-length")
                        length = lines[i].mid(colon + 1).trimmed().toLongLong();
                }
                if (buffer->size() < end + 4 + length)
                    return; // the body is still coming
                request.body = buffer->mid(end + 4, length);
                buffer->clear();
                const QUrl url(QStringLiteral("http://x") + QString::fromLatin1(request.target));
                request.path = url.path();
                request.query = QUrlQuery(url);
                requests.append(request);
                serve(socket, request);
            });
        }
    });
}

QUrl FakeSpotifyServer::base() const {
    return QUrl(QStringLiteral("http://127.0.0.1:%1/").arg(m_server.serverPort()));
}

QList<FakeSpotifyServer::Request> FakeSpotifyServer::apiRequests() const {
    QList<Request> out;
    for (const Request& r : requests)
        if (r.path.startsWith(u"/v1/"))
            out.append(r);
    return out;
}

void FakeSpotifyServer::route(const QString& methodAndPath, Reply reply) {
    m_routes[methodAndPath].append(std::move(reply));
}

void FakeSpotifyServer::routeJSON(const QString& methodAndPath, const QByteArray& json,
                                  int status) {
    route(methodAndPath, Reply{status, json, {{"Content-Type", "application/json"}}, 0});
}

QByteArray FakeSpotifyServer::fixture(const QString& name) {
    QFile file(QStringLiteral(SPOTIFY_FIXTURES "/") + name);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("missing fixture %s", qPrintable(name));
    return file.readAll();
}

void FakeSpotifyServer::routeFixture(const QString& methodAndPath, const QString& fixtureName) {
    routeJSON(methodAndPath, fixture(fixtureName));
}

FakeSpotifyServer::Reply FakeSpotifyServer::answerFor(const Request& request) {
    if (request.path == u"/authorize") {
        challenge = request.query.queryItemValue(QStringLiteral("code_challenge"));
        clientID = request.query.queryItemValue(QStringLiteral("client_id"));
        QUrl back(request.query.queryItemValue(QStringLiteral("redirect_uri"), QUrl::FullyDecoded));
        QUrlQuery answer;
        answer.addQueryItem(QStringLiteral("code"), code);
        answer.addQueryItem(
            QStringLiteral("state"),
            request.query.queryItemValue(QStringLiteral("state"), QUrl::FullyDecoded));
        back.setQuery(answer);
        return Reply{302, {}, {{"Location", back.toEncoded()}}, 0};
    }
    if (request.path == u"/api/token") {
        const QUrlQuery form = request.form();
        const QString grant = form.queryItemValue(QStringLiteral("grant_type"));
        bool valid = false;
        if (grant == u"authorization_code") {
            const QByteArray verifier =
                form.queryItemValue(QStringLiteral("code_verifier"), QUrl::FullyDecoded).toUtf8();
            const QString sent = QString::fromLatin1(
                QCryptographicHash::hash(verifier, QCryptographicHash::Sha256)
                    .toBase64(QByteArray::Base64UrlEncoding | QByteArray::OmitTrailingEquals));
            valid = form.queryItemValue(QStringLiteral("code")) == code && sent == challenge &&
                    form.queryItemValue(QStringLiteral("client_id")) == clientID &&
                    !challenge.isEmpty();
        } else if (grant == u"refresh_token") {
            ++refreshCount;
            valid = !form.queryItemValue(QStringLiteral("refresh_token")).isEmpty();
        }
        if (!valid)
            return Reply{400, R"({"error":"invalid_grant"})", {}, 0};
        ++m_tokenCounter;
        QByteArray body = tokenAnswer;
        body.replace("%1", QByteArray::number(m_tokenCounter));
        Reply reply{tokenStatus, body, {{"Content-Type", "application/json"}}, tokenDelayMs};
        reply.headers.append(tokenHeaders);
        return reply;
    }
    const QString key = QString::fromLatin1(request.method) + u' ' + request.path;
    auto it = m_routes.find(key);
    if (it == m_routes.end() || it->isEmpty())
        return Reply{404, R"({"error":{"status":404,"message":"Not found."}})", {}, 0};
    return it->size() > 1 ? it->takeFirst() : it->first();
}

void FakeSpotifyServer::serve(QTcpSocket* socket, const Request& request) {
    const Reply reply = answerFor(request);
    QByteArray out = "HTTP/1.1 " + QByteArray::number(reply.status) + " Status\r\n";
    for (const auto& [name, value] : reply.headers)
        out += name + ": " + value + "\r\n";
    out += "Content-Length: " + QByteArray::number(reply.body.size()) + "\r\n";
    out += "Connection: close\r\n\r\n";
    out += reply.body;
    const auto send = [socket, out] {
        socket->write(out);
        socket->disconnectFromHost();
    };
    if (reply.delayMs > 0)
        QTimer::singleShot(reply.delayMs, socket, send);
    else
        send();
}
