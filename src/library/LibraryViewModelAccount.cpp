// The library view's account states and its banner: signing in from the view, the moment after,
// and the one button of a failed play or like.
#include "library/LibraryViewModel.h"
#include "library/SpotifyBrowser.h"
#include "spotify/SpotifyLibrary.h"

namespace MirlPlayer {

namespace {

const QString finishSetup = QStringLiteral("Finish setup");
const QString reconnect = QStringLiteral("Reconnect");
const QString dismiss = QStringLiteral("Dismiss");

} // namespace

void LibraryViewModel::watchAccount() {
    connect(&m_library, &SpotifyLibrary::connectedChanged, this, [this] {
        // Only a sign-in begun here earns the "connected" page; any other change shows the truth.
        m_justConnected = m_settingUp && m_library.connected();
        m_settingUp = false;
        Q_EMIT accountChanged();
    });
    connect(&m_library, &SpotifyLibrary::connectingChanged, this,
            &LibraryViewModel::accountChanged);
    connect(&m_browser, &SpotifyBrowser::likeErrorChanged, this, &LibraryViewModel::bannerChanged);
    connect(&m_library, &SpotifyLibrary::grantedScopesChanged, this,
            &LibraryViewModel::bannerChanged);
}

bool LibraryViewModel::connected() const {
    return m_library.connected();
}

bool LibraryViewModel::connecting() const {
    return m_library.connecting();
}

void LibraryViewModel::beginSetup() {
    m_settingUp = true;
    m_library.beginSignIn();
}

void LibraryViewModel::cancelSetup() {
    m_settingUp = false;
    m_library.endSignInFlow();
}

void LibraryViewModel::backToLibrary() {
    if (!m_justConnected)
        return;
    m_justConnected = false;
    Q_EMIT accountChanged();
}

QString LibraryViewModel::banner() const {
    return m_playbackError.isEmpty() ? m_browser.likeErrorText() : m_playbackError;
}

QString LibraryViewModel::bannerAction() const {
    if (!m_playbackError.isEmpty())
        return m_playbackError == PlayerState::setupMessage ? finishSetup : dismiss;
    const auto scopes = m_library.grantedScopes();
    const bool mayLike = !scopes || scopes->contains(QStringLiteral("user-library-modify"));
    return mayLike ? dismiss : reconnect;
}

void LibraryViewModel::bannerActionClicked() {
    const QString action = bannerAction();
    if (action == finishSetup && openSettings)
        openSettings(QStringLiteral("Spotify"));
    else if (action == reconnect)
        m_library.beginSignIn();
    if (m_playbackError.isEmpty())
        m_browser.dismissLikeError();
    setPlaybackError({});
}

} // namespace MirlPlayer
