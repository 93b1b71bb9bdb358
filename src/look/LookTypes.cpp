#include "look/LookTypes.h"

#include "look/Theme.h"

#include <QQmlEngine>

namespace MirlPlayer {

void registerLookTypes(Theme& theme) {
    qRegisterMetaType<Skin>();
    qmlRegisterSingletonInstance("MirlPlayer.Look", 1, 0, "Theme", &theme);
}

void registerLookTypes() {
    registerLookTypes(Theme::shared());
}

} // namespace MirlPlayer
