#pragma once

#include <QDBusConnection>
#include <QDBusVariant>
#include <QHash>
#include <QObject>
#include <optional>

namespace MirlPlayer {

// Whether the user asked the desktop for high contrast, which on Linux stands for reduced
// transparency: the freedesktop appearance preference "contrast" and GNOME's accessibility
// switch "high-contrast", read through the settings portal (org.freedesktop.portal.Settings) and
// followed through its SettingChanged signal. Nothing while neither is known: without a portal,
// or on a desktop that has no such setting. Reads are asynchronous; the GUI thread never waits.
class DesktopContrast : public QObject {
    Q_OBJECT
public:
    explicit DesktopContrast(QDBusConnection bus, QObject* parent = nullptr);

    std::optional<bool> highContrast() const;

Q_SIGNALS:
    void changed();

private Q_SLOTS:
    void settingChanged(const QString& group, const QString& key, const QDBusVariant& value);

private:
    void read(const QString& group, const QString& key);
    void take(const QString& group, const QString& key, const QVariant& value);

    QDBusConnection m_bus;
    QHash<QString, bool> m_known; // "group key" -> whether it asks for high contrast
};

} // namespace MirlPlayer
