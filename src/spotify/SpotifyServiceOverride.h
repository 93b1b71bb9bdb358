#pragma once

#include "spotify/SpotifyLibrary.h"

#include <QString>
#include <functional>
#include <optional>

namespace MirlPlayer {

// The switch that points the program at a Spotify stand-in on this machine (the demo's sample
// library, a developer's fixture server): MIRL_SPOTIFY_SERVICE=http://127.0.0.1:<port>. Only a
// loopback address is taken, so the switch can never send a token to another machine; anything
// else is refused and logged, and the real service is used.
inline constexpr const char* spotifyServiceVariable = "MIRL_SPOTIFY_SERVICE";

// The endpoints under `base` ("/v1/", "/authorize", "/api/token"), or none when `base` is empty
// or not a loopback address (`log` hears why).
std::optional<SpotifyEndpoints> loopbackEndpoints(const QString& base,
                                                  const std::function<void(const QString&)>& log);

// The same from the environment.
std::optional<SpotifyEndpoints>
endpointsFromEnvironment(const std::function<void(const QString&)>& log);

} // namespace MirlPlayer
