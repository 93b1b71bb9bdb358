#include "library/LibraryModule.h"

#include "library/CoverCache.h"
#include "library/CoverImageProvider.h"
#include "playback/SpotifyQueue.h"

#include <QQmlEngine>

void qml_register_types_MirlPlayer_Library();

namespace MirlPlayer {

void useLibraryModule(QQmlEngine& engine) {
    static const bool registered = [] {
        qml_register_types_MirlPlayer_Library();
        SpotifyQueue::registerForQml(); // the view's queue buttons and page
        return true;
    }();
    Q_UNUSED(registered);
    engine.addImportPath(QStringLiteral("qrc:/qt/qml"));
    if (!engine.imageProvider(QStringLiteral("cover")))
        engine.addImageProvider(QStringLiteral("cover"),
                                new CoverImageProvider(CoverCache::shared()));
}

} // namespace MirlPlayer
