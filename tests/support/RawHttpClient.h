#pragma once

// A raw client for the loopback HTTP tests: sends bytes as they are, hostile or not, and collects
// whatever comes back until the server closes the connection.

#include <QHostAddress>
#include <QTcpSocket>
#include <QTest>
#include <memory>

namespace MirlTest {

struct RawHttpClient {
    std::unique_ptr<QTcpSocket> socket = std::make_unique<QTcpSocket>();
    QByteArray received;
    bool closed = false;

    explicit RawHttpClient(quint16 port) {
        QObject::connect(socket.get(), &QTcpSocket::readyRead,
                         [this] { received += socket->readAll(); });
        QObject::connect(socket.get(), &QTcpSocket::disconnected, [this] {
            received += socket->readAll();
            closed = true;
        });
        QObject::connect(socket.get(), &QTcpSocket::errorOccurred, [this] { closed = true; });
        socket->connectToHost(QHostAddress::LocalHost, port);
        socket->waitForConnected(2000);
    }
    void send(const QByteArray& bytes) {
        socket->write(bytes);
        socket->flush();
    }
    bool waitClosed(int ms = 3000) {
        return QTest::qWaitFor([this] { return closed; }, ms);
    }
    QByteArray statusLine() const { return received.left(received.indexOf("\r\n")); }
};

} // namespace MirlTest
