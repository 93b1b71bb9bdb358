#pragma once

#include <QObject>
#include <optional>

namespace MirlPlayer {

class Preferences;
class Theme;

// Reduce Transparency: where the desktop has an accessibility setting for it (its high-contrast
// preference), that setting decides; on a desktop without one, the program's own switch, stored
// as `reduceTransparency`, does. The result goes into the Theme, so the panel and the settings
// window draw solid surfaces while it is on and the stored background stays as chosen. GUI thread.
class ReduceTransparency : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool active READ active NOTIFY changed)
    // Whether the desktop decides; the program's own switch is shown only when it does not.
    Q_PROPERTY(bool desktopDecides READ desktopDecides NOTIFY changed)
    Q_PROPERTY(bool ownSetting READ ownSetting WRITE setOwnSetting NOTIFY changed)
public:
    static inline const QString key = QStringLiteral("reduceTransparency");

    ReduceTransparency(Preferences& prefs, Theme& theme, QObject* parent = nullptr);
    // The process-wide instance over the shared preferences and Theme.
    static ReduceTransparency& shared();

    bool active() const { return m_desktop.value_or(ownSetting()); }
    bool desktopDecides() const { return m_desktop.has_value(); }
    bool ownSetting() const;
    void setOwnSetting(bool on);
    // What the desktop says, or nothing where it has no such setting.
    void setDesktopSetting(std::optional<bool> on);

Q_SIGNALS:
    void changed();

private:
    void publish();

    Preferences& m_prefs;
    Theme& m_theme;
    std::optional<bool> m_desktop;
};

} // namespace MirlPlayer
