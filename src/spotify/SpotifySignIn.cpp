#include "spotify/SpotifySignIn.h"

#include <QCryptographicHash>
#include <QDesktopServices>
#include <QRandomGenerator>
#include <QStringDecoder>
#include <QUrlQuery>
#include <optional>

namespace MirlPlayer {

namespace {

QString base64URL(const QByteArray& bytes) {
    return QString::fromLatin1(
        bytes.toBase64(QByteArray::Base64UrlEncoding | QByteArray::OmitTrailingEquals));
}

} // namespace

QString SpotifySignIn::randomURLSafeToken() {
    QByteArray bytes(32, Qt::Uninitialized);
    QRandomGenerator::system()->fillRange(reinterpret_cast<quint32*>(bytes.data()),
                                          bytes.size() / int(sizeof(quint32)));
    return base64URL(bytes);
}

QString SpotifySignIn::codeChallenge(const QString& verifier) {
    return base64URL(QCryptographicHash::hash(verifier.toUtf8(), QCryptographicHash::Sha256));
}

SpotifySignIn::SpotifySignIn(QObject* parent)
    : QObject(parent) {
    m_timeout.setSingleShot(true);
    connect(&m_timeout, &QTimer::timeout, this, &SpotifySignIn::timedOut);
    m_listener.setHandler([this](const QByteArray& buffer) { return handleCallback(buffer); });
    m_openBrowser = [](const QUrl& url) { QDesktopServices::openUrl(url); };
}

void SpotifySignIn::setTimings(int flowTimeoutMs, int connectionKillMs) {
    m_flowTimeoutMs = flowTimeoutMs;
    m_listener.setKillInterval(connectionKillMs);
}

bool SpotifySignIn::begin(const QString& clientID, const QUrl& authorizeEndpoint) {
    end();
    m_verifier = randomURLSafeToken();
    m_oauthState = randomURLSafeToken();

    QUrlQuery query;
    query.setQueryItems({
        {QStringLiteral("client_id"), clientID},
        {QStringLiteral("response_type"), QStringLiteral("code")},
        {QStringLiteral("redirect_uri"), redirectURI},
        {QStringLiteral("code_challenge_method"), QStringLiteral("S256")},
        {QStringLiteral("code_challenge"), codeChallenge(m_verifier)},
        {QStringLiteral("state"), m_oauthState},
        {QStringLiteral("scope"), scopes},
    });
    QUrl url = authorizeEndpoint;
    url.setQuery(query);
    m_authorizationURL = url;

    if (!m_listener.listen(callbackPort)) {
        end();
        return false;
    }
    m_timeout.start(m_flowTimeoutMs);
    m_openBrowser(url);
    return true;
}

void SpotifySignIn::end() {
    m_listener.close();
    m_timeout.stop();
    m_oauthState.clear();
    m_verifier.clear();
    m_authorizationURL.clear();
}

bool SpotifySignIn::handleCallback(const QByteArray& buffer) {
    QStringDecoder decoder(QStringConverter::Utf8);
    QString text = decoder(buffer);
    if (decoder.hasError())
        text.clear(); // bytes that are no UTF-8 are no callback
    const QStringList fields = text.split(u' ');
    const QString target = fields.size() > 1 ? fields[1] : QString();
    const QUrl url(QStringLiteral("http://127.0.0.1:43821") + target, QUrl::StrictMode);
    const QUrlQuery query(url);

    const auto firstValue = [&](const QString& name) -> std::optional<QString> {
        for (const auto& [key, value] : query.queryItems(QUrl::FullyDecoded))
            if (key == name)
                return value;
        return std::nullopt;
    };
    const auto state = url.isValid() ? firstValue(QStringLiteral("state")) : std::nullopt;
    // The state is only set while the flow waits for the browser.
    const bool accepted = text.startsWith(u"GET ") && url.isValid() && url.path() == u"/callback" &&
                          state && !m_oauthState.isEmpty() && *state == m_oauthState;
    // A rejected request changes nothing, so a stray request cannot end the flow.
    if (!accepted)
        return false;

    const QString verifier = m_verifier;
    m_listener.close();
    m_timeout.stop();
    m_oauthState.clear(); // the callback cannot be replayed
    m_verifier.clear();
    const auto code = firstValue(QStringLiteral("code"));
    if (!code || code->isEmpty())
        Q_EMIT refused(); // the browser still sees the 200 page
    else
        Q_EMIT codeReceived(*code, verifier);
    return true;
}

} // namespace MirlPlayer
