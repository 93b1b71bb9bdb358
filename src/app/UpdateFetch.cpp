#include "app/UpdateFetch.h"

#include <QFile>
#include <QHostAddress>
#include <QNetworkAccessManager>
#include <QNetworkReply>

namespace MirlPlayer {

bool isAllowedUpdateURL(const QUrl& url, bool allowLoopback) {
    if (!url.isValid() || url.host().isEmpty())
        return false;
    if (url.scheme() == u"https")
        return true;
    const QHostAddress host(url.host());
    return allowLoopback && url.scheme() == u"http" &&
           (host.isLoopback() || url.host() == u"localhost");
}

UpdateFetch::UpdateFetch(QNetworkAccessManager& network, const QUrl& url, Options options,
                         QFile* file, Done done, QObject* parent)
    : QObject(parent)
    , m_options(options)
    , m_file(file)
    , m_done(std::move(done)) {
    if (!isAllowedUpdateURL(url, m_options.allowLoopback)) {
        // Answered on the next turn of the event loop, like every other answer.
        QMetaObject::invokeMethod(
            this, [this] { fail(QStringLiteral("not a secure address")); }, Qt::QueuedConnection);
        return;
    }
    QNetworkRequest request(url);
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute,
                         QNetworkRequest::UserVerifiedRedirectPolicy);
    request.setMaximumRedirectsAllowed(5);
    request.setTransferTimeout(m_options.idleTimeoutMs);
    // Compressed answers would let a small transfer grow past the limit unseen.
    request.setRawHeader("Accept-Encoding", "identity");
    m_reply = network.get(request);
    connect(m_reply, &QNetworkReply::redirected, this, [this](const QUrl& to) {
        if (isAllowedUpdateURL(to, m_options.allowLoopback))
            Q_EMIT m_reply->redirectAllowed();
        else
            fail(QStringLiteral("redirected to an address that is not secure"));
    });
    connect(m_reply, &QNetworkReply::metaDataChanged, this, [this] {
        const QVariant length = m_reply->header(QNetworkRequest::ContentLengthHeader);
        if (length.isValid() && length.toLongLong() > m_options.limit)
            fail(QStringLiteral("too large"));
    });
    connect(m_reply, &QNetworkReply::readyRead, this, &UpdateFetch::received);
    connect(m_reply, &QNetworkReply::finished, this, &UpdateFetch::finished);
}

UpdateFetch::~UpdateFetch() {
    abort();
}

void UpdateFetch::abort() {
    m_done = nullptr;
    if (m_reply) {
        m_reply->disconnect(this);
        m_reply->abort();
        m_reply->deleteLater();
        m_reply = nullptr;
    }
}

void UpdateFetch::received() {
    if (!m_reply)
        return;
    // Redirect answers carry bodies of their own; only the final answer counts.
    if (m_reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt() / 100 == 3) {
        m_reply->readAll();
        return;
    }
    const QByteArray chunk = m_reply->readAll();
    m_size += chunk.size();
    if (m_size > m_options.limit)
        return fail(QStringLiteral("too large"));
    if (!m_file)
        m_body += chunk;
    else if (m_file->write(chunk) != chunk.size())
        fail(QStringLiteral("could not be saved"));
}

void UpdateFetch::finished() {
    if (!m_reply)
        return;
    received();
    if (!m_reply)
        return;
    const int status = m_reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    if (m_reply->error() != QNetworkReply::NoError || status != 200)
        return fail(m_reply->errorString());
    if (m_options.exactLength && m_size != m_options.limit)
        return fail(QStringLiteral("not the announced length"));
    if (m_file && !m_file->flush())
        return fail(QStringLiteral("could not be saved"));
    Done done = std::move(m_done);
    abort();
    if (done)
        done({});
}

void UpdateFetch::fail(const QString& error) {
    Done done = std::move(m_done);
    abort();
    if (done)
        done(error);
}

} // namespace MirlPlayer
