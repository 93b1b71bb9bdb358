#pragma once

#include "spotify/SpotifyError.h"
#include "spotify/SpotifyLoopbackServer.h"
#include "spotify/SpotifyRequestBudget.h"

#include <QCoro/QCoroTask>
#include <QJsonArray>
#include <QJsonObject>
#include <QList>
#include <QMap>
#include <QNetworkAccessManager>
#include <QObject>
#include <QPromise>
#include <QSet>
#include <QString>
#include <QStringList>
#include <QTimer>
#include <QUrl>
#include <functional>
#include <memory>
#include <optional>

namespace MirlPlayer {

class Clock;
class Preferences;

// Where the service talks to. Spotify's public endpoints; tests point them at a local server.
struct SpotifyEndpoints {
    QUrl apiBase{QStringLiteral("https://api.spotify.com/v1/")};
    QUrl authorize{QStringLiteral("https://accounts.spotify.com/authorize")};
    QUrl token{QStringLiteral("https://accounts.spotify.com/api/token")};
};

// Durations of the sign-in flow and of a request. Tests shorten them; the program never does.
struct SpotifyTimings {
    int signInTimeoutMs = 180'000;
    int connectionKillMs = 5'000;
    int requestTimeoutMs = 25'000;
};

// One Web API answer with a status from 200 to 299.
struct SpotifyResponse {
    int status = 0;
    QByteArray data;
};

// What a Spotify Connect start came to: the API accepted a play command for this computer
// (*started*); the song was put next in Spotify's queue and needs a skip (*queued*); Connect cannot
// be used now and nothing was tried (*unavailable*); or it failed with a sentence for the user.
struct SpotifyPlaybackStart {
    enum class Outcome { started, queued, unavailable, failed };
    Outcome outcome = Outcome::unavailable;
    QString message;
};

// The account session: the client ID of the user's own Spotify app, the sign-in with PKCE through
// the browser and a loopback listener, the tokens, and the one request path that every Web API
// call takes (server pause, shared token refresh, request budget, address check, status words).
// Lives on the GUI thread. Work that outlives a session reset is recognised by `generation` and
// dropped with a cancellation.
class SpotifyLibrary : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool connected READ connected NOTIFY connectedChanged)
    Q_PROPERTY(bool connecting READ connecting NOTIFY connectingChanged)
    Q_PROPERTY(QString connectionError READ connectionErrorText NOTIFY connectionErrorChanged)
    Q_PROPERTY(QString clientID READ clientID NOTIFY clientIDChanged)
    Q_PROPERTY(QStringList grantedScopes READ grantedScopeList NOTIFY grantedScopesChanged)
    Q_PROPERTY(bool hasPlaybackScopes READ hasPlaybackScopes NOTIFY grantedScopesChanged)

public:
    static constexpr quint16 callbackPort = 43821;
    static inline const QString redirectURI = QStringLiteral("http://127.0.0.1:43821/callback");
    static inline const QString scopes =
        QStringLiteral("playlist-read-private playlist-read-collaborative user-library-read "
                       "user-library-modify user-read-playback-state user-modify-playback-state");
    static inline const QString signInFile = QStringLiteral("com.kestrova.mirlpro.spotify.json");
    // Built-in client ID of a prepared build (set at configure time), else empty.
    static QString bundledClientID();

    // `clientID` overrides the stored setting; `loadStored` reads the sign-in file at once.
    SpotifyLibrary(Preferences& defaults, Clock& clock,
                   std::optional<QString> clientID = std::nullopt, bool loadStored = true,
                   QObject* parent = nullptr);
    ~SpotifyLibrary() override;

    // The shared session of the program, made at first use.
    static SpotifyLibrary& shared();

    // --- test seams ---
    void setEndpoints(const SpotifyEndpoints& endpoints) { m_endpoints = endpoints; }
    void setTimings(const SpotifyTimings& timings);
    void setBrowserOpener(std::function<void(const QUrl&)> opener) {
        m_openBrowser = std::move(opener);
    }
    // Receives the diagnostic lines; the shared instance writes them to the focus log.
    void setLogSink(std::function<void(const QString&)> sink) { m_log = std::move(sink); }
    // Replaces the wait for a request slot; gets the slot's wall-clock moment.
    void setSleeper(std::function<QCoro::Task<void>(double until)> sleeper) {
        m_sleeper = std::move(sleeper);
    }
    void setMachineName(const QString& name) { m_machineName = name; }

    // --- published state ---
    bool connected() const { return m_connected; }
    bool connecting() const { return m_connecting; }
    std::optional<QString> connectionError() const { return m_connectionError; }
    QString connectionErrorText() const { return m_connectionError.value_or(QString()); }
    QString clientID() const { return m_clientID; }
    std::optional<QSet<QString>> grantedScopes() const { return m_grantedScopes; }
    QStringList grantedScopeList() const;
    // True while the scopes are unknown (after a restart) or include both playback scopes.
    bool hasPlaybackScopes() const;

    int generation() const { return m_generation; }
    double expiry() const { return m_expiry; }
    bool hasAccessToken() const { return !m_accessToken.isEmpty(); }
    std::optional<QString> userID() const { return m_userID; }
    std::optional<QString> thisMacDeviceID() const { return m_thisMacDeviceID; }
    SpotifyRequestBudget& budget() { return m_budget; }

    // --- sign-in ---
    static bool isValidClientID(const QString& text);
    // 32 random bytes as unpadded base64url: 43 characters.
    static QString randomURLSafeToken();
    // The PKCE S256 challenge of a verifier.
    static QString codeChallenge(const QString& verifier);
    // The folder "MIRL PRO" in the user's data folder, and the sign-in file in it.
    static QString privateSupportFolder();
    static QString signInFilePath();

    Q_INVOKABLE bool setClientID(const QString& text);
    Q_INVOKABLE void beginSignIn();
    // Stops a running sign-in flow; also the Cancel of the settings page.
    Q_INVOKABLE void endSignInFlow();
    Q_INVOKABLE void disconnectAccount();
    void resetSession();
    void loadStoredSignIn();
    // The authorization address of the running flow (empty when none is running).
    QUrl authorizationURL() const { return m_authorizationURL; }

    // Posts `form` to the token endpoint and takes the tokens of the answer.
    QCoro::Task<void> requestToken(QList<std::pair<QString, QString>> form, int generation);

    // --- the Web API ---
    QString retryAfterKey() const { return QStringLiteral("spotifyRetryAfter.") + m_clientID; }
    // The moment, in seconds since 1970, up to which nothing is sent.
    double pauseMoment() const;
    QString rateLimitMessage() const;

    // `path` is relative to the Web API base or an absolute address such as a `next` link.
    QCoro::Task<SpotifyResponse> request(QString path, QString method = QStringLiteral("GET"),
                                         std::optional<QJsonObject> body = std::nullopt,
                                         std::optional<QString> forbiddenMessage = std::nullopt,
                                         bool bulk = false);
    QCoro::Task<QJsonObject> getJSON(QString path, bool bulk = false);
    QCoro::Task<QMap<QString, bool>> areSaved(QStringList uris);
    QCoro::Task<void> setSaved(QStringList uris, bool saved);
    QCoro::Task<std::optional<QString>> userCollectionURI();

    // --- devices ---
    // The Connect device id of the Spotify client on this computer, or none.
    QCoro::Task<std::optional<QString>> resolveThisMac(std::optional<QString> playingURI);
    // The human-readable name of this machine, compared with Spotify's device names.
    QString machineName() const;

    // --- Spotify Connect ---
    static inline const QString noDeviceMessage = QStringLiteral(
        "Spotify on this computer wasn’t found. Open Spotify and play something once.");
    // Starts `trackURI` on this computer's Spotify: inside its list when that is an album, a
    // playlist or the collection (else its album), otherwise as the next song of Spotify's queue.
    // An API success says nothing about what plays; the caller verifies.
    QCoro::Task<SpotifyPlaybackStart> startPlayback(QString trackURI,
                                                    std::optional<QString> contextURI,
                                                    std::optional<QString> album,
                                                    std::optional<QString> currentTrackURI);
    // Whether the Web API reports `uri` as the song of this computer's Spotify.
    QCoro::Task<bool> checkPlayback(QString uri);

Q_SIGNALS:
    void connectedChanged();
    void connectingChanged();
    void connectionErrorChanged();
    void clientIDChanged();
    void grantedScopesChanged();
    // The session was reset; the library memory of the account goes with it.
    void sessionReset();

private:
    // The one token refresh in flight. Every waiter awaits the same future, which ends once and
    // stays ended: no waiter can be woken twice or miss the end.
    struct RefreshFlight {
        QPromise<void> landed;
        std::exception_ptr error;
    };
    struct DeviceCache {
        QJsonArray objects;
        double expires = 0;
    };

    void setConnected(bool value);
    void setConnecting(bool value);
    void setConnectionError(std::optional<QString> value);
    void setGrantedScopes(std::optional<QSet<QString>> value);
    void log(const QString& line) const;
    double now() const;

    QMap<QString, QString> readSignInMap() const;
    bool saveSignInMap(const QMap<QString, QString>& map) const;
    bool handleCallback(const QByteArray& buffer);
    QCoro::Task<void> exchangeCode(QString code, QString verifier, int generation);
    QCoro::Task<void> refreshToken(int generation);
    QCoro::Task<void> runRefresh(std::shared_ptr<RefreshFlight> flight, int generation);
    QCoro::Task<void> sleepUntil(double moment);
    // Waits for the reply; a session reset aborts it.
    QCoro::Task<void> finish(QNetworkReply* reply);
    QCoro::Task<QJsonArray> deviceList();

    Preferences& m_defaults; // rateLimitDefaults and the client ID setting
    Clock& m_clock;

    std::optional<QSet<QString>> m_grantedScopes;
    bool m_connected = false;
    bool m_connecting = false;
    std::optional<QString> m_connectionError;
    QNetworkAccessManager m_session;
    QString m_clientID;
    QString m_accessToken;
    double m_expiry;
    QString m_refreshToken;
    SpotifyLoopbackServer m_listener;
    QTimer m_timeout;
    QString m_verifier;
    QString m_oauthState;
    std::shared_ptr<RefreshFlight> m_refreshTask;
    int m_generation = 0;
    SpotifyRequestBudget m_budget;
    std::optional<QString> m_userID;
    std::optional<QString> m_thisMacDeviceID;
    std::optional<DeviceCache> m_deviceCache;

    QUrl m_authorizationURL;
    SpotifyEndpoints m_endpoints;
    SpotifyTimings m_timings;
    std::function<void(const QUrl&)> m_openBrowser;
    std::function<void(const QString&)> m_log;
    std::function<QCoro::Task<void>(double)> m_sleeper;
    std::optional<QString> m_machineName;
};

} // namespace MirlPlayer
