#pragma once

#include <QByteArray>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QUrl>
#include <functional>

class QFile;
class QNetworkAccessManager;
class QNetworkReply;

namespace MirlPlayer {

// Whether the updater may talk to `url`: HTTPS only, or plain HTTP to this machine when
// `allowLoopback` (the tests' local server).
bool isAllowedUpdateURL(const QUrl& url, bool allowLoopback);

// One GET for the updater, asynchronous on the GUI thread: every redirect must lead to an
// allowed address, and the answer may not exceed `limit` bytes (nor, with `exactLength`, differ
// from it). The body collects in memory, or in `file` when one is given. `done` runs once, with
// an empty error on success; it never runs after abort() or the fetch's destruction.
class UpdateFetch : public QObject {
    Q_OBJECT
public:
    struct Options {
        qint64 limit = 0;
        bool exactLength = false;
        bool allowLoopback = false;
        int idleTimeoutMs = 30000;
    };
    using Done = std::function<void(const QString& error)>;

    UpdateFetch(QNetworkAccessManager& network, const QUrl& url, Options options, QFile* file,
                Done done, QObject* parent = nullptr);
    ~UpdateFetch() override;

    QByteArray body() const { return m_body; }
    void abort();

private:
    void received();
    void finished();
    void fail(const QString& error);

    Options m_options;
    QFile* m_file;
    Done m_done;
    QPointer<QNetworkReply> m_reply;
    QByteArray m_body;
    qint64 m_size = 0;
};

} // namespace MirlPlayer
