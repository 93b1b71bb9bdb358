#pragma once

#include "setup/SetupModel.h"

#include <QString>
#include <functional>
#include <memory>
#include <optional>
#include <utility>

namespace MirlPlayer {

class Preferences;

// What the running program tells the assistant.
struct SetupInputs {
    // The bus name and the name of the player that plays the part "Music" now (empty when none).
    std::function<std::pair<QString, QString>()> musicPlayer;
    std::function<bool()> statusItemVisible;
    std::function<bool()> spotifyConnected;
    // Opens the program's own Spotify settings.
    std::function<void()> openSpotifySettings;
};

// A setup model on this desktop: the players on the session bus, the audio probe on PipeWire
// listening to the player the user connected, and the desktop's own settings programs.
// `liveVisualizer` starts as the audio settings say (on, unless capture was stored as off).
std::unique_ptr<SetupModel> makeSetupModel(Preferences& prefs, SetupInputs inputs);

// The player of the part "Music" for the music step: the one the players' rule picks now, else
// the one named in the setting `musicPlayer`, else an Apple Music client (Cider).
MusicAutomation::App musicRow(const std::pair<QString, QString>& current, const QString& setting);

// The desktop's settings program for `what`: "audio" the recording apps of the sound settings,
// "automation" the apps' permissions; the first that is installed, nothing when none is.
std::optional<std::pair<QString, QStringList>> desktopSettings(const QString& what);

} // namespace MirlPlayer
