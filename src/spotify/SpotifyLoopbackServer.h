#pragma once

#include <QByteArray>
#include <QObject>
#include <QString>
#include <QTcpServer>
#include <functional>

namespace MirlPlayer {

// The short-lived HTTP listener that receives the browser's answer to a sign-in. It binds to
// 127.0.0.1 only, reads at most `maxRequestBytes` of one request per connection, gives every
// connection `killInterval` to deliver a complete header, and answers each complete request with
// the verdict of its handler. A connection that overflows, stalls, breaks off or errs is closed
// without an answer. Closing the listener frees the port; connections already accepted finish on
// their own.
class SpotifyLoopbackServer : public QObject {
    Q_OBJECT
public:
    static constexpr qsizetype maxRequestBytes = 16384;

    // Decides on one complete request (everything up to and including the header end, possibly
    // more). Returns whether it is accepted; the server then answers and closes the connection.
    using Handler = std::function<bool(const QByteArray& request)>;

    explicit SpotifyLoopbackServer(QObject* parent = nullptr);

    void setHandler(Handler handler) { m_handler = std::move(handler); }
    // How long a connection may take to send its header; 5 s unless a test shortens it.
    void setKillInterval(int ms) { m_killIntervalMs = ms; }

    bool listen(quint16 port);
    void close();
    bool isListening() const { return m_server.isListening(); }
    QString errorString() const { return m_server.errorString(); }
    quint16 port() const { return m_server.serverPort(); }

    // The complete HTTP answer for a verdict.
    static QByteArray answer(bool accepted);

private:
    void accept();

    QTcpServer m_server;
    Handler m_handler;
    int m_killIntervalMs = 5000;
};

} // namespace MirlPlayer
