#include "library/LibraryModule.h"

#include "library/CoverCache.h"
#include "library/CoverImageProvider.h"

#include <QQmlEngine>

void qml_register_types_MirlPlayer_Library();

namespace MirlPlayer {

void useLibraryModule(QQmlEngine& engine) {
    static const bool registered = [] {
        qml_register_types_MirlPlayer_Library();
        return true;
    }();
    Q_UNUSED(registered);
    engine.addImportPath(QStringLiteral("qrc:/qt/qml"));
    if (!engine.imageProvider(QStringLiteral("cover")))
        engine.addImageProvider(QStringLiteral("cover"),
                                new CoverImageProvider(CoverCache::shared()));
}

} // namespace MirlPlayer
