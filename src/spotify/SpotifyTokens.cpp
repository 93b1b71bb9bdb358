#include "spotify/SpotifyLibrary.h"

#include "core/Clock.h"

#include <QCoro/QCoroFuture>
#include <QCoro/QCoroNetworkReply>
#include <QCoro/QCoroSignal>
#include <QJsonDocument>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <algorithm>

namespace MirlPlayer {

namespace {

// Forms are built outside the coroutines: GCC 12 cannot keep string literals of a braced list
// in a coroutine frame.
using Form = QList<std::pair<QString, QString>>;

Form exchangeForm(const QString& code, const QString& verifier) {
    return {{QStringLiteral("grant_type"), QStringLiteral("authorization_code")},
            {QStringLiteral("code"), code},
            {QStringLiteral("redirect_uri"), SpotifyLibrary::redirectURI},
            {QStringLiteral("code_verifier"), verifier}};
}

Form refreshForm(const QString& refreshToken) {
    return {{QStringLiteral("grant_type"), QStringLiteral("refresh_token")},
            {QStringLiteral("refresh_token"), refreshToken}};
}

// A token that claims to live longer than a day is refreshed after a day all the same.
constexpr double kMaxTokenLifetime = 24 * 3600;

} // namespace

// --- tokens: the exchange after sign-in and the one shared refresh ---

QCoro::Task<void> SpotifyLibrary::exchangeCode(QString code, QString verifier, int generation) {
    try {
        co_await requestToken(exchangeForm(code, verifier), generation);
        if (generation != m_generation)
            co_return;
        setConnected(true);
        endSignInFlow();
    } catch (const SpotifyError& error) {
        if (generation != m_generation || error.isCancellation())
            co_return;
        setConnectionError(error.localizedDescription());
        endSignInFlow();
    }
}

QCoro::Task<void> SpotifyLibrary::requestToken(QList<std::pair<QString, QString>> form,
                                               int generation) {
    form.append({QStringLiteral("client_id"), m_clientID});
    QByteArray body;
    for (const auto& [key, value] : form) {
        if (!body.isEmpty())
            body += '&';
        body += QUrl::toPercentEncoding(key) + '=' + QUrl::toPercentEncoding(value);
    }
    QNetworkRequest request(m_endpoints.token);
    request.setTransferTimeout(m_timings.requestTimeoutMs);
    request.setHeader(QNetworkRequest::ContentTypeHeader,
                      QByteArrayLiteral("application/x-www-form-urlencoded"));
    std::unique_ptr<QNetworkReply, void (*)(QNetworkReply*)> reply(
        m_session.post(request, body), [](QNetworkReply* r) { r->deleteLater(); });
    const int status = co_await answerStatus(reply.get(), generation);
    const QString failure = QStringLiteral(
        "Spotify could not connect to MIRL PRO. Please try again. If this continues, contact "
        "MIRL PRO support.");
    if (status != 200)
        throw SpotifyFailure(failure);
    QJsonParseError parseError;
    const QJsonDocument doc = QJsonDocument::fromJson(reply->readAll(), &parseError);
    if (parseError.error != QJsonParseError::NoError)
        throw SpotifySystemError(parseError.errorString());
    const QJsonObject object = doc.object();
    if (!doc.isObject() || !object.value(u"access_token").isString())
        throw SpotifyFailure(failure);

    // The refresh token reaches the disk before the access token is taken, so a sign-in that
    // cannot be saved leaves no half session.
    if (object.value(u"refresh_token").isString()) {
        const QString refresh = object.value(u"refresh_token").toString();
        if (!SpotifyTokenStore::store(m_clientID, refresh))
            throw SpotifyFailure(
                QStringLiteral("MIRL PRO could not save your connection. Please try again."));
        m_refreshToken = refresh;
    }
    m_accessToken = object.value(u"access_token").toString();
    const QJsonValue expiresIn = object.value(u"expires_in");
    m_expiry = now() + (expiresIn.isDouble()
                            ? std::clamp(expiresIn.toDouble(), 0.0, kMaxTokenLifetime) - 60.0
                            : 3540.0);
    if (object.value(u"scope").isString()) {
        const QStringList words = object.value(u"scope").toString().split(u' ', Qt::SkipEmptyParts);
        setGrantedScopes(QSet<QString>(words.begin(), words.end()));
    }
}

QCoro::Task<void> SpotifyLibrary::runRefresh(std::shared_ptr<RefreshFlight> flight,
                                             int generation) {
    try {
        co_await requestToken(refreshForm(m_refreshToken), generation);
    } catch (...) {
        flight->error = std::current_exception();
    }
    if (m_refreshTask == flight)
        m_refreshTask.reset();
    flight->landed.finish();
}

QCoro::Task<void> SpotifyLibrary::refreshToken(int generation) {
    std::shared_ptr<RefreshFlight> flight = m_refreshTask;
    if (!flight) {
        flight = m_refreshTask = std::make_shared<RefreshFlight>();
        flight->landed.start();
        runRefresh(flight, generation);
    }
    // Whoever started it, every waiter gets its outcome.
    co_await flight->landed.future();
    if (generation != m_generation)
        throw SpotifyCancellation();
    if (flight->error)
        std::rethrow_exception(flight->error);
}

} // namespace MirlPlayer
