#pragma once

#include "spotify/SpotifyLoopbackServer.h"

#include <QObject>
#include <QString>
#include <QTimer>
#include <QUrl>
#include <functional>

namespace MirlPlayer {

// The browser half of signing in: the authorization address with a PKCE challenge and an OAuth
// state, the loopback listener that waits for the browser's answer, and the watchdog that gives
// up after a while. It hands the code and its verifier on; the token exchange is not its job.
class SpotifySignIn : public QObject {
    Q_OBJECT
public:
    static constexpr quint16 callbackPort = 43821;
    static inline const QString redirectURI = QStringLiteral("http://127.0.0.1:43821/callback");
    static inline const QString scopes =
        QStringLiteral("playlist-read-private playlist-read-collaborative user-library-read "
                       "user-library-modify user-read-playback-state user-modify-playback-state");

    // 32 random bytes as unpadded base64url: 43 characters.
    static QString randomURLSafeToken();
    // The PKCE S256 challenge of a verifier.
    static QString codeChallenge(const QString& verifier);

    explicit SpotifySignIn(QObject* parent = nullptr);

    void setTimings(int flowTimeoutMs, int connectionKillMs);
    void setBrowserOpener(std::function<void(const QUrl&)> opener) {
        m_openBrowser = std::move(opener);
    }

    // Opens the browser on the authorization page once the listener holds the callback port;
    // false when the port cannot be taken.
    bool begin(const QString& clientID, const QUrl& authorizeEndpoint);
    // Forgets the running flow and frees the port.
    void end();
    // The authorization address of the running flow (empty when none is running).
    QUrl authorizationURL() const { return m_authorizationURL; }

Q_SIGNALS:
    void codeReceived(const QString& code, const QString& verifier);
    // The browser came back without a code: what a refusal on the consent page gives.
    void refused();
    void timedOut();

private:
    bool handleCallback(const QByteArray& buffer);

    SpotifyLoopbackServer m_listener;
    QTimer m_timeout;
    int m_flowTimeoutMs = 180'000;
    QString m_verifier;
    QString m_oauthState;
    QUrl m_authorizationURL;
    std::function<void(const QUrl&)> m_openBrowser;
};

} // namespace MirlPlayer
