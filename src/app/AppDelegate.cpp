#include "app/AppDelegate.h"

#include "audio/AudioCaptureSettings.h"
#include "core/FocusLog.h"
#include "core/Logging.h"
#include "core/Preferences.h"
#include "look/Theme.h"
#include "playback/MusicController.h"
#include "playback/PlayerState.h"

namespace MirlPlayer {

AppDelegate::AppDelegate(Preferences& prefs, PlayerBridge* bridge, Clock& clock, QObject* parent)
    : QObject(parent)
    , m_prefs(prefs)
    , m_player(std::make_unique<PlayerState>(bridge, clock)) {
    // Covers colour the theme as well as the accent.
    connect(m_player.get(), &PlayerState::started, this,
            [this] { m_player->controller()->artwork().setTheme(&Theme::shared()); });
}

AppDelegate::~AppDelegate() = default;

void AppDelegate::applicationDidFinishLaunching() {
    if (m_launched)
        return;
    m_launched = true;
    if (m_hooks.buildPanel)
        m_hooks.buildPanel(*this);

    // An installation from before the assistant existed has a stored showVisualizer but no
    // seed marker: it plays at once, and still sees the assistant one time.
    const bool completed = m_prefs.boolValue(QStringLiteral("setupCompleted"), false);
    const bool legacyInstall =
        !completed && m_prefs.contains(QStringLiteral("showVisualizer")) &&
        !m_prefs.boolValue(QStringLiteral("factoryPreferencesSeeded"), false);
    if (completed || legacyInstall) {
        m_prefs.setValue(QStringLiteral("setupCompleted"), true);
        m_player->start();
    }
    if (!m_prefs.boolValue(QStringLiteral("setupAssistantFinished"), false))
        showSetup();
}

void AppDelegate::showSetup() {
    Q_EMIT setupShown();
    if (m_hooks.showSetupWindow)
        m_hooks.showSetupWindow(*this);
}

void AppDelegate::reportProblem() {
    if (m_hooks.composeFeedback)
        m_hooks.composeFeedback(false);
}

void AppDelegate::shareIdea() {
    if (m_hooks.composeFeedback)
        m_hooks.composeFeedback(true);
}

void AppDelegate::finishSetup(bool liveVisualizer) {
    AudioCaptureSettings::shared().setEnabled(liveVisualizer);
    Theme::shared().setShowVisualizer(liveVisualizer);
    m_prefs.setValue(QStringLiteral("setupCompleted"), true);
    // From now on the assistant is a replay: it may be closed, and reopening goes to Settings.
    m_prefs.setValue(QStringLiteral("setupAssistantFinished"), true);
    if (m_hooks.closeSetupWindow)
        m_hooks.closeSetupWindow();
    m_player->start(); // nothing new on a replay, when the player runs already
}

void AppDelegate::applicationShouldHandleReopen() {
    if (m_prefs.boolValue(QStringLiteral("setupAssistantFinished"), false))
        openSettings();
    else
        showSetup();
}

void AppDelegate::openSettings(const QString& page) {
    if (m_hooks.openSettings)
        m_hooks.openSettings(page);
}

void AppDelegate::applicationWillTerminate() {
    FocusLog::shared().logLine(QStringLiteral("MIRL PRO quitting normally"));
    // The capture must not outlive the process.
    if (m_hooks.stopAudioEngine)
        m_hooks.stopAudioEngine(*m_player);
    if (m_hooks.setupWindowOpen && m_hooks.setupWindowOpen() && m_hooks.stopSetupProbe)
        m_hooks.stopSetupProbe();
    FocusLog::shared().flush();
}

} // namespace MirlPlayer
