#include "settings/SpotifyAccountPage.h"

#include "core/Preferences.h"
#include "library/SpotifyMemory.h"
#include "spotify/SpotifyLibrary.h"

namespace MirlPlayer {

namespace {
const QString clientIDKey = QStringLiteral("spotifyClientID");
}

SpotifyAccountPage::SpotifyAccountPage(SpotifyLibrary& library, SpotifyMemory& memory,
                                       Preferences& prefs, QObject* parent)
    : QObject(parent)
    , m_library(library)
    , m_memory(memory)
    , m_prefs(prefs) {
    for (auto signal : {&SpotifyLibrary::connectedChanged, &SpotifyLibrary::connectingChanged,
                        &SpotifyLibrary::clientIDChanged, &SpotifyLibrary::grantedScopesChanged})
        connect(&library, signal, this, &SpotifyAccountPage::changed);
}

bool SpotifyAccountPage::connected() const {
    return m_library.connected();
}

bool SpotifyAccountPage::scopesMissing() const {
    const auto scopes = m_library.grantedScopes();
    return (scopes && !scopes->contains(QStringLiteral("user-library-modify"))) ||
           !m_library.hasPlaybackScopes();
}

QString SpotifyAccountPage::statusText() const {
    if (m_library.connecting())
        return QStringLiteral("Waiting for you to approve in your browser…");
    if (!m_library.connected())
        return QStringLiteral("Not connected");
    if (scopesMissing())
        return QStringLiteral("Connected, but some features need a reconnect");
    return QStringLiteral("Connected");
}

QString SpotifyAccountPage::explanation() const {
    if (m_library.connected() && scopesMissing())
        return QStringLiteral("Reconnect once so MIRL PRO can like songs and start songs without "
                              "bringing Spotify to the front. Playback works either way.");
    return QStringLiteral("MIRL PRO shows your playlists and Liked Songs, likes songs for you, "
                          "and starts songs without bringing the Spotify app forward. Sign-in "
                          "happens in your browser; MIRL PRO never sees your password.");
}

QString SpotifyAccountPage::mainButton() const {
    if (m_library.connecting())
        return QStringLiteral("Cancel");
    if (!m_library.connected())
        return QStringLiteral("Connect Spotify");
    return scopesMissing() ? QStringLiteral("Reconnect for all features")
                           : QStringLiteral("Reconnect");
}

void SpotifyAccountPage::mainAction() {
    if (m_library.connecting())
        m_library.endSignInFlow();
    else
        m_library.beginSignIn();
}

void SpotifyAccountPage::disconnect() {
    m_library.disconnectAccount();
}

bool SpotifyAccountPage::ownApp() const {
    return m_prefs.object(clientIDKey).typeId() == QMetaType::QString &&
           !m_prefs.stringValue(clientIDKey, QString()).isEmpty();
}

bool SpotifyAccountPage::hasClientID() const {
    return SpotifyLibrary::isValidClientID(m_library.clientID());
}

QString SpotifyAccountPage::appText() const {
    if (ownApp())
        return QStringLiteral("Your own app · Client ID ") +
               m_prefs.stringValue(clientIDKey, QString()).left(6) + QStringLiteral("…");
    return QStringLiteral("Built into this copy of MIRL PRO");
}

QString SpotifyAccountPage::submitClientID(const QString& text) {
    if (!m_library.setClientID(text))
        return QStringLiteral("That isn’t a Client ID. It is 32 characters, letters a–f and "
                              "numbers. Don’t use the Client secret.");
    if (!m_library.connected())
        m_library.beginSignIn();
    Q_EMIT changed();
    return {};
}

void SpotifyAccountPage::clearCache() {
    m_memory.clearMemory();
    m_cacheCleared = true;
    Q_EMIT changed();
}

void SpotifyAccountPage::pageLeft() {
    if (!m_cacheCleared)
        return;
    m_cacheCleared = false;
    Q_EMIT changed();
}

} // namespace MirlPlayer
