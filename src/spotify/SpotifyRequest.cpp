#include "spotify/SpotifyLibrary.h"

#include "core/Clock.h"
#include "core/Numbers.h"
#include "core/Preferences.h"

#include <QCoro/QCoroNetworkReply>
#include <QCoro/QCoroSignal>
#include <QDateTime>
#include <QJsonDocument>
#include <QLocale>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <algorithm>
#include <chrono>
#include <cmath>

namespace MirlPlayer {

namespace {

// Seconds since 1970 as a date; what lies beyond the years a date can hold is held at the edge.
QDateTime momentOf(double seconds) {
    constexpr qint64 limit = 100'000LL * 365 * 24 * 3600 * 1000; // a hundred thousand years
    return QDateTime::fromMSecsSinceEpoch(clampedInt64(seconds * 1000.0, -limit, limit));
}

} // namespace

// --- the request path ---

double SpotifyLibrary::pauseMoment() const {
    const double stored = m_defaults.doubleValue(retryAfterKey(), 0.0);
    if (std::isnan(stored))
        return 0.0;
    // No server asks for more than a day; a later moment is a hand-edited setting or a clock
    // that was set back, and must not lock the account out for longer.
    return std::min(stored, now() + maxPauseSeconds);
}

QString SpotifyLibrary::rateLimitMessage() const {
    const QDateTime moment = momentOf(pauseMoment());
    return QStringLiteral("Spotify has temporarily limited requests. Try again after ") +
           QLocale().toString(moment.time(), QLocale::ShortFormat) +
           QStringLiteral(". MIRL will pause requests until then.");
}

QCoro::Task<void> SpotifyLibrary::sleepUntil(double moment) {
    if (moment <= now())
        co_return;
    if (m_sleeper) {
        co_await m_sleeper(moment);
        co_return;
    }
    const auto wait = std::chrono::milliseconds(
        clampedInt64(std::ceil((moment - now()) * 1000.0), 0, qint64(maxPauseSeconds * 1000)));
    // A reset ends the wait at once; the caller's generation check then cancels.
    co_await qCoro(this, &SpotifyLibrary::sessionReset, wait);
}

QCoro::Task<SpotifyResponse> SpotifyLibrary::request(QString path, QString method,
                                                     std::optional<QJsonObject> body,
                                                     std::optional<QString> forbiddenMessage,
                                                     bool bulk) {
    const int generation = m_generation;
    if (now() < pauseMoment())
        throw SpotifyFailure(rateLimitMessage());

    if (m_accessToken.isEmpty() || m_expiry < now())
        co_await refreshToken(generation);

    const double slot = m_budget.reserve(now(), bulk);
    co_await sleepUntil(slot);
    if (generation != m_generation)
        throw SpotifyCancellation();
    // Another request may have met a 429 while this one waited.
    if (now() < pauseMoment())
        throw SpotifyFailure(rateLimitMessage());

    // Only the Web API itself ever sees the bearer token, whatever a `next` link says.
    const bool absolute = path.startsWith(u"https://") || path.startsWith(u"http://");
    const QUrl url(absolute ? path : m_endpoints.apiBase.toString() + path);
    if (!url.isValid() || url.scheme() != m_endpoints.apiBase.scheme() ||
        url.host() != m_endpoints.apiBase.host() ||
        url.port(443) != m_endpoints.apiBase.port(443) || !url.path().startsWith(u"/v1/") ||
        !url.userInfo().isEmpty())
        throw SpotifyFailure(QStringLiteral("Invalid Spotify library address."));

    QNetworkRequest request(url);
    request.setTransferTimeout(m_timings.requestTimeoutMs);
    request.setRawHeader("Authorization", "Bearer " + m_accessToken.toUtf8());
    QByteArray payload;
    if (body) {
        payload = QJsonDocument(*body).toJson(QJsonDocument::Compact);
        request.setHeader(QNetworkRequest::ContentTypeHeader,
                          QByteArrayLiteral("application/json"));
    }
    QNetworkReply* raw = nullptr;
    if (method == u"GET" && !body)
        raw = m_session.get(request);
    else
        raw = m_session.sendCustomRequest(request, method.toUtf8(), payload);
    std::unique_ptr<QNetworkReply, void (*)(QNetworkReply*)> reply(
        raw, [](QNetworkReply* r) { r->deleteLater(); });
    const int status = co_await answerStatus(reply.get(), generation);
    if (status >= 200 && status <= 299)
        co_return SpotifyResponse{status, reply->readAll()};

    if (status == 429) {
        // Also the answer when the app's daily quota is used up; it is handled the same way.
        const QByteArray header = reply->rawHeader("Retry-After");
        bool ok = false;
        const double parsed =
            QString::fromLatin1(reply->hasRawHeader("Retry-After") ? header : "30").toDouble(&ok);
        const double wait =
            (ok && std::isfinite(parsed)) ? std::clamp(parsed, 1.0, maxPauseSeconds) : 30.0;
        const double moment = std::max(now() + wait, pauseMoment());
        m_defaults.setValue(retryAfterKey(), moment);
        const QDateTime local = momentOf(moment);
        log(QStringLiteral("Spotify API rate limited; requests paused until ") +
            local.toOffsetFromUtc(local.offsetFromUtc()).toString(Qt::ISODate));
        throw SpotifyFailure(rateLimitMessage());
    }
    if (status == 403)
        throw SpotifyFailure(forbiddenMessage.value_or(QStringLiteral(
            "Spotify refused this. If it keeps happening, open your app at the Spotify Developer "
            "Dashboard → User Management and add the email of your Spotify account. Spotify "
            "Premium is required for your own app.")));
    if (status == 401) {
        // No second attempt here: the next request of any caller refreshes first.
        m_accessToken.clear();
        m_expiry = Clock::distantPast;
        throw SpotifyFailure(
            QStringLiteral("Your Spotify session expired. Retry, or reconnect your account."));
    }
    throw SpotifyFailure(QStringLiteral("Spotify couldn’t load this content (") +
                         QString::number(status) + QStringLiteral("). Please try again."));
}

QCoro::Task<QJsonObject> SpotifyLibrary::getJSON(QString path, bool bulk) {
    const SpotifyResponse response =
        co_await request(path, QStringLiteral("GET"), std::nullopt, std::nullopt, bulk);
    if (response.data.isEmpty())
        co_return QJsonObject();
    QJsonParseError parseError;
    const QJsonDocument doc = QJsonDocument::fromJson(response.data, &parseError);
    if (parseError.error != QJsonParseError::NoError)
        throw SpotifySystemError(parseError.errorString());
    co_return doc.object(); // a body that is no object gives an empty one
}

namespace {

constexpr qsizetype kSavedBatch = 40;

QString encodedURIList(const QStringList& uris) {
    return QString::fromLatin1(QUrl::toPercentEncoding(uris.join(u',')));
}

} // namespace

QCoro::Task<QMap<QString, bool>> SpotifyLibrary::areSaved(QStringList uris) {
    QMap<QString, bool> result;
    for (qsizetype start = 0; start < uris.size(); start += kSavedBatch) {
        const QStringList batch = uris.mid(start, kSavedBatch);
        const SpotifyResponse response =
            co_await request(QStringLiteral("me/library/contains?uris=") + encodedURIList(batch));
        const QJsonDocument doc = QJsonDocument::fromJson(response.data);
        const QJsonArray answers = doc.isArray() ? doc.array() : QJsonArray();
        const qsizetype count = std::min(qsizetype(answers.size()), batch.size());
        for (qsizetype i = 0; i < count; ++i)
            if (answers[i].isBool())
                result.insert(batch[i], answers[i].toBool());
    }
    co_return result;
}

QCoro::Task<void> SpotifyLibrary::setSaved(QStringList uris, bool saved) {
    const QString reconnect = QStringLiteral(
        "To like songs from MIRL PRO, reconnect Spotify once (Settings → Spotify) so MIRL PRO "
        "may update your Liked Songs.");
    if (m_grantedScopes && !m_grantedScopes->contains(u"user-library-modify"_qs))
        throw SpotifyFailure(reconnect);
    for (qsizetype start = 0; start < uris.size(); start += kSavedBatch) {
        const QStringList batch = uris.mid(start, kSavedBatch);
        co_await request(QStringLiteral("me/library?uris=") + encodedURIList(batch),
                         saved ? QStringLiteral("PUT") : QStringLiteral("DELETE"), std::nullopt,
                         reconnect);
    }
}

QCoro::Task<std::optional<QString>> SpotifyLibrary::userCollectionURI() {
    if (!m_userID) {
        const int generation = m_generation;
        try {
            const QJsonObject me = co_await getJSON(QStringLiteral("me"));
            if (generation == m_generation && me.value(u"id").isString())
                m_userID = me.value(u"id").toString();
        } catch (const SpotifyError&) {
            // Unknown owner: the caller goes on without one.
        }
    }
    if (!m_userID)
        co_return std::nullopt;
    co_return QStringLiteral("spotify:user:") + *m_userID + QStringLiteral(":collection");
}

} // namespace MirlPlayer
