#include "app/FactoryPreferences.h"

#include "app/PropertyList.h"
#include "core/Preferences.h"
#include "core/PrivateFile.h"

namespace MirlPlayer {

const QStringList& factoryPreferenceKeys() {
    static const QStringList keys{
        "backgroundStyleID",
        "frostedGlassOpacity",
        "liquidGlassOpacity",
        "glassDensityVersion",
        "glassReflection",
        "edgeReflection",
        "skinID",
        "lastFixedSkinID",
        "inkID",
        "positionID",
        "vizID",
        "showVisualizer",
        "styleID",
        "glow",
        "customHSB",
        "vizConfig2",
        "matchLoudness",
        "audioCaptureEnabled",
        "motionSpeed",
    };
    return keys;
}

bool seedFactoryPreferences(Preferences& prefs, const QString& resourcePath) {
    if (prefs.contains(QStringLiteral("factoryPreferencesSeeded")))
        return false;
    for (const QString& key : factoryPreferenceKeys()) {
        if (prefs.contains(key))
            return false;
    }
    if (prefs.contains(QStringLiteral("setupCompleted")) ||
        prefs.contains(QStringLiteral("setupAssistantFinished")))
        return false;
    if (resourcePath.isEmpty())
        return false;
    // A missing or corrupt file leaves the marker unset, so seeding is tried again next launch.
    const auto data = readFile(resourcePath, 1024 * 1024);
    if (!data)
        return false;
    const auto parsed = parsePropertyList(*data);
    if (!parsed || parsed->typeId() != QMetaType::QVariantMap)
        return false;
    const QVariantMap values = parsed->toMap();
    for (auto it = values.constBegin(); it != values.constEnd(); ++it) {
        if (factoryPreferenceKeys().contains(it.key()))
            prefs.setValue(it.key(), it.value());
    }
    prefs.setValue(QStringLiteral("factoryPreferencesSeeded"), true);
    return true;
}

} // namespace MirlPlayer
