#include "spotify/SpotifyLibrary.h"

#include "core/Clock.h"
#include "core/FocusLog.h"
#include "core/Preferences.h"
#include "core/PrivateFile.h"

#include <QCoro/QCoroFuture>
#include <QCoro/QCoroNetworkReply>
#include <QCoro/QCoroSignal>
#include <QCryptographicHash>
#include <QDesktopServices>
#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QRandomGenerator>
#include <QStandardPaths>
#include <QStringDecoder>
#include <QUrlQuery>
#include <chrono>
#include <cmath>

#ifndef MIRL_SPOTIFY_CLIENT_ID
#define MIRL_SPOTIFY_CLIENT_ID ""
#endif

namespace MirlPlayer {

namespace {

const QString kClientIDKey = QStringLiteral("spotifyClientID");

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

QString base64URL(const QByteArray& bytes) {
    return QString::fromLatin1(
        bytes.toBase64(QByteArray::Base64UrlEncoding | QByteArray::OmitTrailingEquals));
}

} // namespace

QString SpotifyLibrary::bundledClientID() {
    return QStringLiteral(MIRL_SPOTIFY_CLIENT_ID).trimmed();
}

SpotifyLibrary::SpotifyLibrary(Preferences& defaults, Clock& clock, std::optional<QString> clientID,
                               bool loadStored, QObject* parent)
    : QObject(parent)
    , m_defaults(defaults)
    , m_clock(clock)
    , m_expiry(Clock::distantPast) {
    QString chosen;
    if (clientID)
        chosen = *clientID;
    else if (m_defaults.object(kClientIDKey).typeId() == QMetaType::QString)
        chosen = m_defaults.stringValue(kClientIDKey);
    else
        chosen = bundledClientID();
    m_clientID = chosen.trimmed();

    m_timeout.setSingleShot(true);
    connect(&m_timeout, &QTimer::timeout, this, [this] {
        setConnectionError(QStringLiteral("Sign-in timed out. Try connecting again."));
        endSignInFlow();
    });
    m_listener.setHandler([this](const QByteArray& buffer) { return handleCallback(buffer); });
    m_openBrowser = [](const QUrl& url) { QDesktopServices::openUrl(url); };
    setTimings(m_timings);

    if (loadStored)
        loadStoredSignIn();
}

SpotifyLibrary::~SpotifyLibrary() = default;

SpotifyLibrary& SpotifyLibrary::shared() {
    // Lives to the end of the process, like the other shared models.
    static SpotifyLibrary* library = [] {
        auto* made = new SpotifyLibrary(Preferences::shared(), Clock::system());
        made->setLogSink([](const QString& line) { FocusLog::shared().logLine(line); });
        return made;
    }();
    return *library;
}

void SpotifyLibrary::setTimings(const SpotifyTimings& timings) {
    m_timings = timings;
    m_listener.setKillInterval(timings.connectionKillMs);
}

double SpotifyLibrary::now() const {
    return m_clock.wallNow();
}

void SpotifyLibrary::log(const QString& line) const {
    if (m_log)
        m_log(line);
}

// --- published fields ---

void SpotifyLibrary::setConnected(bool value) {
    if (m_connected == value)
        return;
    m_connected = value;
    Q_EMIT connectedChanged();
}

void SpotifyLibrary::setConnecting(bool value) {
    if (m_connecting == value)
        return;
    m_connecting = value;
    Q_EMIT connectingChanged();
}

void SpotifyLibrary::setConnectionError(std::optional<QString> value) {
    if (m_connectionError == value)
        return;
    m_connectionError = std::move(value);
    Q_EMIT connectionErrorChanged();
}

void SpotifyLibrary::setGrantedScopes(std::optional<QSet<QString>> value) {
    if (m_grantedScopes == value)
        return;
    m_grantedScopes = std::move(value);
    Q_EMIT grantedScopesChanged();
}

QStringList SpotifyLibrary::grantedScopeList() const {
    if (!m_grantedScopes)
        return {};
    QStringList list(m_grantedScopes->begin(), m_grantedScopes->end());
    list.sort();
    return list;
}

bool SpotifyLibrary::hasPlaybackScopes() const {
    return !m_grantedScopes || (m_grantedScopes->contains(u"user-modify-playback-state"_qs) &&
                                m_grantedScopes->contains(u"user-read-playback-state"_qs));
}

// --- client ID and stored sign-in ---

bool SpotifyLibrary::isValidClientID(const QString& text) {
    if (text.size() != 32)
        return false;
    for (QChar c : text) {
        const char16_t u = c.unicode();
        const bool hex = (u >= '0' && u <= '9') || (u >= 'a' && u <= 'f') || (u >= 'A' && u <= 'F');
        if (!hex)
            return false;
    }
    return true;
}

bool SpotifyLibrary::setClientID(const QString& text) {
    const QString value = text.trimmed().toLower();
    if (!isValidClientID(value))
        return false;
    if (value == m_clientID && m_defaults.object(kClientIDKey).typeId() == QMetaType::QString)
        return true;
    resetSession();
    m_defaults.setValue(kClientIDKey, value);
    if (m_clientID != value) {
        m_clientID = value;
        Q_EMIT clientIDChanged();
    }
    loadStoredSignIn();
    return true;
}

QString SpotifyLibrary::privateSupportFolder() {
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
           QStringLiteral("/MIRL PRO");
}

QString SpotifyLibrary::signInFilePath() {
    return privateSupportFolder() + u'/' + signInFile;
}

QMap<QString, QString> SpotifyLibrary::readSignInMap() const {
    QMap<QString, QString> map;
    const auto data = readFile(signInFilePath(), 1024 * 1024);
    if (!data)
        return map;
    const QJsonDocument doc = QJsonDocument::fromJson(*data);
    if (!doc.isObject())
        return map;
    const QJsonObject object = doc.object();
    for (auto it = object.begin(); it != object.end(); ++it) {
        // The file maps strings to strings; anything else spoils the whole file.
        if (!it.value().isString())
            return {};
        map.insert(it.key(), it.value().toString());
    }
    return map;
}

bool SpotifyLibrary::saveSignInMap(const QMap<QString, QString>& map) const {
    QJsonObject object;
    for (auto it = map.begin(); it != map.end(); ++it)
        object.insert(it.key(), it.value());
    const QByteArray encoded = QJsonDocument(object).toJson(QJsonDocument::Compact);
    writePrivateFile(signInFilePath(), encoded);
    // Trust only what can be read back.
    const auto back = readFile(signInFilePath(), 1024 * 1024);
    return back && *back == encoded;
}

void SpotifyLibrary::loadStoredSignIn() {
    if (!isValidClientID(m_clientID))
        return;
    // There is no keychain of older versions on this platform: the file is the only store.
    const QMap<QString, QString> map = readSignInMap();
    const auto entry = map.constFind(m_clientID);
    if (entry == map.cend())
        return;
    m_refreshToken = *entry;
    setConnected(!m_refreshToken.isEmpty());
}

void SpotifyLibrary::resetSession() {
    ++m_generation;
    endSignInFlow();
    if (m_refreshTask) {
        // Waiters learn of it through their generation check when the flight lands.
        m_refreshTask.reset();
    }
    m_accessToken.clear();
    m_refreshToken.clear();
    m_expiry = Clock::distantPast;
    setConnected(false);
    m_userID.reset();
    setGrantedScopes(std::nullopt);
    setConnectionError(std::nullopt);
    m_thisMacDeviceID.reset();
    m_deviceCache.reset();
    // Last, so that anything woken by it sees the finished reset.
    Q_EMIT sessionReset();
}

void SpotifyLibrary::disconnectAccount() {
    resetSession();
    QFile::remove(signInFilePath());
}

// --- sign-in flow ---

QString SpotifyLibrary::randomURLSafeToken() {
    QByteArray bytes(32, Qt::Uninitialized);
    QRandomGenerator::system()->fillRange(reinterpret_cast<quint32*>(bytes.data()),
                                          bytes.size() / int(sizeof(quint32)));
    return base64URL(bytes);
}

QString SpotifyLibrary::codeChallenge(const QString& verifier) {
    return base64URL(QCryptographicHash::hash(verifier.toUtf8(), QCryptographicHash::Sha256));
}

void SpotifyLibrary::beginSignIn() {
    if (!isValidClientID(m_clientID)) {
        setConnectionError(QStringLiteral("Set up your Spotify app first (Settings → Spotify)."));
        return;
    }
    resetSession();
    // From here on the old sign-in is gone, also if this flow fails.
    QFile::remove(signInFilePath());
    setConnectionError(std::nullopt);
    setConnecting(true);
    m_verifier = randomURLSafeToken();
    m_oauthState = randomURLSafeToken();

    QUrlQuery query;
    query.setQueryItems({
        {QStringLiteral("client_id"), m_clientID.trimmed()},
        {QStringLiteral("response_type"), QStringLiteral("code")},
        {QStringLiteral("redirect_uri"), redirectURI},
        {QStringLiteral("code_challenge_method"), QStringLiteral("S256")},
        {QStringLiteral("code_challenge"), codeChallenge(m_verifier)},
        {QStringLiteral("state"), m_oauthState},
        {QStringLiteral("scope"), scopes},
    });
    QUrl url = m_endpoints.authorize;
    url.setQuery(query);
    m_authorizationURL = url;

    if (!m_listener.listen(callbackPort)) {
        setConnectionError(
            QStringLiteral("Could not start Spotify sign-in. Port 43821 may be in use."));
        endSignInFlow();
        return;
    }
    m_timeout.start(m_timings.signInTimeoutMs);
    m_openBrowser(url);
}

void SpotifyLibrary::endSignInFlow() {
    m_listener.close();
    m_timeout.stop();
    setConnecting(false);
    m_oauthState.clear();
    m_verifier.clear();
    m_authorizationURL.clear();
}

bool SpotifyLibrary::handleCallback(const QByteArray& buffer) {
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
    const bool accepted = text.startsWith(u"GET ") && m_connecting && url.isValid() &&
                          url.path() == u"/callback" && state && !m_oauthState.isEmpty() &&
                          *state == m_oauthState;
    // A rejected request changes nothing, so a stray request cannot end the flow.
    if (!accepted)
        return false;

    const QString verifier = m_verifier;
    m_listener.close();
    m_timeout.stop();
    m_oauthState.clear(); // the callback cannot be replayed
    const auto code = firstValue(QStringLiteral("code"));
    if (!code || code->isEmpty()) {
        // What a refusal in the browser gives; the browser still saw the 200 page.
        setConnectionError(QStringLiteral("Spotify sign-in was cancelled. You can try again."));
        endSignInFlow();
        return true;
    }
    exchangeCode(*code, verifier, m_generation);
    return true;
}

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

QCoro::Task<void> SpotifyLibrary::finish(QNetworkReply* reply) {
    // Queued, so that a reset never resumes a waiting flow in the middle of itself.
    connect(this, &SpotifyLibrary::sessionReset, reply, &QNetworkReply::abort,
            Qt::QueuedConnection);
    if (!reply->isFinished())
        co_await qCoro(reply, &QNetworkReply::finished);
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
    co_await finish(reply.get());
    if (generation != m_generation)
        throw SpotifyCancellation();

    const QVariant statusAttribute = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute);
    if (!statusAttribute.isValid())
        throw SpotifySystemError(reply->errorString());
    const QString failure = QStringLiteral(
        "Spotify could not connect to MIRL PRO. Please try again. If this continues, contact "
        "MIRL PRO support.");
    if (statusAttribute.toInt() != 200)
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
        QMap<QString, QString> map = readSignInMap();
        map.insert(m_clientID, refresh);
        if (!saveSignInMap(map))
            throw SpotifyFailure(
                QStringLiteral("MIRL PRO could not save your connection. Please try again."));
        m_refreshToken = refresh;
    }
    m_accessToken = object.value(u"access_token").toString();
    const QJsonValue expiresIn = object.value(u"expires_in");
    m_expiry = now() + (expiresIn.isDouble() ? expiresIn.toDouble() - 60.0 : 3540.0);
    if (object.value(u"scope").isString()) {
        const QStringList words = object.value(u"scope").toString().split(u' ', Qt::SkipEmptyParts);
        setGrantedScopes(QSet<QString>(words.begin(), words.end()));
    }
}

// --- the request path ---

double SpotifyLibrary::pauseMoment() const {
    return m_defaults.doubleValue(retryAfterKey(), 0.0);
}

QString SpotifyLibrary::rateLimitMessage() const {
    const QDateTime moment = QDateTime::fromMSecsSinceEpoch(qint64(pauseMoment() * 1000.0));
    return QStringLiteral("Spotify has temporarily limited requests. Try again after ") +
           QLocale().toString(moment.time(), QLocale::ShortFormat) +
           QStringLiteral(". MIRL will pause requests until then.");
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

QCoro::Task<void> SpotifyLibrary::sleepUntil(double moment) {
    if (moment <= now())
        co_return;
    if (m_sleeper) {
        co_await m_sleeper(moment);
        co_return;
    }
    const auto wait = std::chrono::milliseconds(qint64(std::ceil((moment - now()) * 1000.0)));
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
    co_await finish(reply.get());
    if (generation != m_generation)
        throw SpotifyCancellation();

    const QVariant statusAttribute = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute);
    if (!statusAttribute.isValid())
        throw SpotifySystemError(reply->errorString());
    const int status = statusAttribute.toInt();
    if (status >= 200 && status <= 299)
        co_return SpotifyResponse{status, reply->readAll()};

    if (status == 429) {
        // Also the answer when the app's daily quota is used up; it is handled the same way.
        const QByteArray header = reply->rawHeader("Retry-After");
        bool ok = false;
        const double parsed =
            QString::fromLatin1(reply->hasRawHeader("Retry-After") ? header : "30").toDouble(&ok);
        const double wait = (ok && std::isfinite(parsed)) ? std::max(parsed, 1.0) : 30.0;
        const double moment = std::max(now() + wait, pauseMoment());
        m_defaults.setValue(retryAfterKey(), moment);
        const QDateTime local = QDateTime::fromMSecsSinceEpoch(qint64(moment * 1000.0));
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
