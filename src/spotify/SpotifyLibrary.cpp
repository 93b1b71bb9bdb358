#include "spotify/SpotifyLibrary.h"
#include "spotify/SpotifyServiceOverride.h"

#include "core/Clock.h"
#include "core/FocusLog.h"
#include "core/Preferences.h"

#include <QCoro/QCoroNetworkReply>
#include <QCoro/QCoroSignal>
#include <QJsonDocument>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <cmath>

#ifndef MIRL_SPOTIFY_CLIENT_ID
#define MIRL_SPOTIFY_CLIENT_ID ""
#endif

namespace MirlPlayer {

namespace {

const QString kClientIDKey = QStringLiteral("spotifyClientID");

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

    // A 3xx is an answer like any other: a redirect would carry a token to wherever it points.
    m_session.setRedirectPolicy(QNetworkRequest::ManualRedirectPolicy);
    connect(&m_signIn, &SpotifySignIn::timedOut, this, [this] {
        setConnectionError(QStringLiteral("Sign-in timed out. Try connecting again."));
        endSignInFlow();
    });
    connect(&m_signIn, &SpotifySignIn::refused, this, [this] {
        setConnectionError(QStringLiteral("Spotify sign-in was cancelled. You can try again."));
        endSignInFlow();
    });
    connect(&m_signIn, &SpotifySignIn::codeReceived, this,
            [this](const QString& code, const QString& verifier) {
                exchangeCode(code, verifier, m_generation);
            });
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
        const auto standIn = endpointsFromEnvironment([](const QString& line) {
            qWarning().noquote() << line;
            FocusLog::shared().logLine(line);
        });
        if (standIn)
            made->setEndpoints(*standIn);
        return made;
    }();
    return *library;
}

void SpotifyLibrary::setTimings(const SpotifyTimings& timings) {
    m_timings = timings;
    m_signIn.setTimings(timings.signInTimeoutMs, timings.connectionKillMs);
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

void SpotifyLibrary::loadStoredSignIn() {
    if (!isValidClientID(m_clientID))
        return;
    // There is no keychain of older versions on this platform: the file is the only store.
    const QMap<QString, QString> map = SpotifyTokenStore::read();
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
    SpotifyTokenStore::remove();
}

// --- sign-in flow (the token exchange is in SpotifyTokens.cpp) ---

void SpotifyLibrary::beginSignIn() {
    if (!isValidClientID(m_clientID)) {
        setConnectionError(QStringLiteral("Set up your Spotify app first (Settings → Spotify)."));
        return;
    }
    resetSession();
    // From here on the old sign-in is gone, also if this flow fails.
    SpotifyTokenStore::remove();
    setConnectionError(std::nullopt);
    setConnecting(true);
    if (!m_signIn.begin(m_clientID.trimmed(), m_endpoints.authorize)) {
        setConnectionError(
            QStringLiteral("Could not start Spotify sign-in. Port 43821 may be in use."));
        endSignInFlow();
    }
}

void SpotifyLibrary::endSignInFlow() {
    m_signIn.end();
    setConnecting(false);
}

QCoro::Task<int> SpotifyLibrary::answerStatus(QNetworkReply* reply, int generation) {
    // Queued, so that a reset never resumes a waiting flow in the middle of itself.
    connect(this, &SpotifyLibrary::sessionReset, reply, &QNetworkReply::abort,
            Qt::QueuedConnection);
    if (!reply->isFinished())
        co_await qCoro(reply, &QNetworkReply::finished);
    if (generation != m_generation)
        throw SpotifyCancellation();
    const QVariant status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute);
    if (!status.isValid())
        throw SpotifySystemError(reply->errorString());
    co_return status.toInt();
}

} // namespace MirlPlayer
