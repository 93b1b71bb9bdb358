#pragma once

#include <QUrl>

class QQmlEngine;

namespace MirlPlayer {

// Makes `import MirlPlayer.Library` work in `engine`: the module's types live in a static
// library, whose registration the linker would otherwise leave out, and its qmldir is a resource.
// Also installs the image provider "cover" of the shared cover cache.
void useLibraryModule(QQmlEngine& engine);

// The library view, for the panel to show while the library is open.
inline QUrl libraryViewSource() {
    return QUrl(QStringLiteral("qrc:/qt/qml/MirlPlayer/Library/SpotifyLibraryView.qml"));
}

} // namespace MirlPlayer
