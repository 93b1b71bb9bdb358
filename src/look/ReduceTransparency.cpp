#include "look/ReduceTransparency.h"

#include "core/Preferences.h"
#include "look/Theme.h"

namespace MirlPlayer {

ReduceTransparency::ReduceTransparency(Preferences& prefs, Theme& theme, QObject* parent)
    : QObject(parent)
    , m_prefs(prefs)
    , m_theme(theme) {
    connect(&m_prefs, &Preferences::changed, this, [this](const QString& changedKey) {
        if (changedKey == key && !m_desktop)
            publish();
    });
    m_theme.setReduceTransparency(active());
}

ReduceTransparency& ReduceTransparency::shared() {
    static auto* instance = new ReduceTransparency(Preferences::shared(), Theme::shared());
    return *instance;
}

bool ReduceTransparency::ownSetting() const {
    return m_prefs.boolValue(key, false);
}

void ReduceTransparency::setOwnSetting(bool on) {
    if (on != ownSetting())
        m_prefs.setValue(key, on); // published through the preferences' change
}

void ReduceTransparency::setDesktopSetting(std::optional<bool> on) {
    if (on == m_desktop)
        return;
    m_desktop = on;
    publish();
}

void ReduceTransparency::publish() {
    m_theme.setReduceTransparency(active());
    Q_EMIT changed();
}

} // namespace MirlPlayer
