#pragma once

#include <QDBusConnection>
#include <QObject>
#include <functional>
#include <memory>

class QMenu;
class QSystemTrayIcon;
class QDBusServiceWatcher;

namespace MirlPlayer {

// Whether a status item can really be seen: a StatusNotifierWatcher is on the session bus and
// reports a host (a panel that draws the items). Followed as the watcher comes, goes and
// announces hosts; its property is read asynchronously, so asking never waits for the bus.
class StatusItemVisibility : public QObject {
    Q_OBJECT
public:
    explicit StatusItemVisibility(QDBusConnection bus, QObject* parent = nullptr);
    bool visible() const { return m_visible; }

Q_SIGNALS:
    void visibleChanged(bool visible);

private Q_SLOTS:
    void hostRegistered();

private:
    void refresh();
    void setVisible(bool visible);

    QDBusConnection m_bus;
    QDBusServiceWatcher* m_watcher;
    bool m_visible = false;
    int m_token = 0; // the newest property read; older answers are dropped
};

// The status item: the program's icon in the desktop's tray (StatusNotifierItem where a watcher
// runs) with the status menu, which is built afresh by `rebuild` and never changed after.
class StatusItem : public QObject {
    Q_OBJECT
public:
    using MenuBuilder = std::function<std::unique_ptr<QMenu>()>;
    explicit StatusItem(MenuBuilder build, QObject* parent = nullptr);
    ~StatusItem() override;

    // Replaces the whole menu with a newly built one.
    void rebuild();
    QMenu* menu() const { return m_menu.get(); }

private:
    MenuBuilder m_build;
    std::unique_ptr<QSystemTrayIcon> m_icon;
    std::unique_ptr<QMenu> m_menu;
};

} // namespace MirlPlayer
