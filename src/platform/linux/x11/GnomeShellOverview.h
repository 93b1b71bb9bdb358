#pragma once

#include <QObject>
#include <QVariantMap>

namespace MirlPlayer {

// Whether GNOME Shell shows its activities overview, read from the shell's OverviewActive
// property on the session bus and kept current by its change signal. False wherever the shell
// does not run.
class GnomeShellOverview : public QObject {
    Q_OBJECT
public:
    explicit GnomeShellOverview(QObject* parent = nullptr);
    bool active() const { return m_active; }

private Q_SLOTS:
    void propertiesChanged(const QString& interface, const QVariantMap& changed,
                           const QStringList& invalidated);

private:
    bool m_active = false;
};

} // namespace MirlPlayer
