#pragma once

namespace MirlPlayer {

class Theme;

// Makes the look model known to QML: the singleton `Theme` in the module "MirlPlayer.Look" 1.0,
// backed by the given instance (the shared one by default). Call once, on the GUI thread, before
// loading any QML that imports the module.
void registerLookTypes(Theme& theme);
void registerLookTypes();

} // namespace MirlPlayer
