// The shell's overview state, read from a stand-in for GNOME Shell on a private session bus.
#include "X11TestMain.h"
#include "platform/linux/x11/GnomeShellOverview.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QGuiApplication>
#include <QTest>

using namespace MirlPlayer;

namespace {

class FakeShell : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.gnome.Shell")
    Q_PROPERTY(bool OverviewActive READ overviewActive)
public:
    bool active = false;
    QDBusConnection bus =
        QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("fake-shell"));
    bool overviewActive() const { return active; }

    bool publish() {
        return bus.registerObject(QStringLiteral("/org/gnome/Shell"), this,
                                  QDBusConnection::ExportAllProperties) &&
               bus.registerService(QStringLiteral("org.gnome.Shell"));
    }
    void setActive(bool value) {
        active = value;
        QDBusMessage changed = QDBusMessage::createSignal(
            QStringLiteral("/org/gnome/Shell"), QStringLiteral("org.freedesktop.DBus.Properties"),
            QStringLiteral("PropertiesChanged"));
        changed << QStringLiteral("org.gnome.Shell")
                << QVariantMap{{QStringLiteral("OverviewActive"), value}} << QStringList();
        bus.send(changed);
    }
};

} // namespace

class tst_GnomeShellOverview : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void withoutTheShellThereIsNoOverview() {
        GnomeShellOverview overview;
        QTest::qWait(100);
        QVERIFY(!overview.active());
    }

    void followsTheShellsOverviewState() {
        FakeShell shell;
        shell.active = true;
        QVERIFY(shell.publish());
        GnomeShellOverview overview;
        QTRY_VERIFY(overview.active()); // read once at the start
        shell.setActive(false);
        QTRY_VERIFY(!overview.active());
        shell.setActive(true);
        QTRY_VERIFY(overview.active());
    }
};

MIRL_X11_TEST_MAIN(tst_GnomeShellOverview)

#include "tst_GnomeShellOverview.moc"
