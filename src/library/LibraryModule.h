#pragma once

class QQmlEngine;

namespace MirlPlayer {

// Makes `import MirlPlayer.Library` work in `engine`: the module's types live in a static
// library, whose registration the linker would otherwise leave out, and its qmldir is a resource.
// Also installs the image provider "cover" of the shared cover cache.
void useLibraryModule(QQmlEngine& engine);

} // namespace MirlPlayer
