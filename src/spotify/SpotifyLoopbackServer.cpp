#include "spotify/SpotifyLoopbackServer.h"

#include <QHostAddress>
#include <QPointer>
#include <QTcpSocket>
#include <QTimer>
#include <memory>

namespace MirlPlayer {

SpotifyLoopbackServer::SpotifyLoopbackServer(QObject* parent)
    : QObject(parent) {
    connect(&m_server, &QTcpServer::newConnection, this, &SpotifyLoopbackServer::accept);
}

bool SpotifyLoopbackServer::listen(quint16 port) {
    if (m_server.isListening())
        return true;
    return m_server.listen(QHostAddress::LocalHost, port);
}

void SpotifyLoopbackServer::close() {
    m_server.close();
}

QByteArray SpotifyLoopbackServer::answer(bool accepted) {
    const QByteArray body =
        accepted ? QStringLiteral(
                       "Return to MIRL PRO to finish connecting Spotify. You can close this tab.")
                       .toUtf8()
                 : QStringLiteral("Invalid sign-in callback. Return to MIRL PRO and try again.")
                       .toUtf8();
    QByteArray out = accepted ? "HTTP/1.1 200 OK\r\n" : "HTTP/1.1 400 Bad Request\r\n";
    out += "Content-Type: text/plain; charset=utf-8\r\n";
    out += "Content-Length: " + QByteArray::number(body.size()) + "\r\n";
    out += "Connection: close\r\n\r\n";
    out += body;
    return out;
}

void SpotifyLoopbackServer::accept() {
    while (QTcpSocket* socket = m_server.nextPendingConnection()) {
        // The socket is a child of the listening server; it outlives close() and deletes itself
        // once it is finished.
        struct State {
            QByteArray buffer;
            bool answered = false;
        };
        auto state = std::make_shared<State>();
        auto* kill = new QTimer(socket);
        kill->setSingleShot(true);

        const auto drop = [socket, kill] {
            kill->stop();
            socket->abort();
            socket->deleteLater();
        };
        connect(kill, &QTimer::timeout, socket, drop);
        connect(socket, &QTcpSocket::disconnected, socket, [socket, state, drop] {
            if (state->answered)
                socket->deleteLater();
            else
                drop(); // the stream ended before a whole header came
        });
        connect(socket, &QTcpSocket::errorOccurred, socket, [state, drop] {
            if (!state->answered)
                drop();
        });
        connect(socket, &QTcpSocket::readyRead, socket, [this, socket, state, kill, drop] {
            if (state->answered) {
                socket->readAll(); // whatever follows the header is not ours to read
                return;
            }
            for (;;) {
                const qint64 room = maxRequestBytes - state->buffer.size();
                if (room <= 0)
                    break;
                const QByteArray chunk = socket->read(room);
                if (chunk.isEmpty())
                    break;
                state->buffer += chunk;
                if (state->buffer.contains("\r\n\r\n")) {
                    kill->stop();
                    state->answered = true;
                    const bool accepted = m_handler && m_handler(state->buffer);
                    socket->write(answer(accepted));
                    socket->disconnectFromHost(); // closes once the answer is sent
                    return;
                }
            }
            if (state->buffer.size() >= maxRequestBytes)
                drop();
        });
        kill->start(m_killIntervalMs);
    }
}

} // namespace MirlPlayer
