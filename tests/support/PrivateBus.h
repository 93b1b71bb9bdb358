#pragma once

// A session bus of a test's own: a dbus-daemon on a socket in a private temporary folder, stopped
// when the object goes. For tests of D-Bus code that need no audio and no player.

#include <QDBusConnection>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <csignal>
#include <sys/prctl.h>

namespace MirlTest {

// A session bus of the test's own.
class PrivateBus {
public:
    // `policy` is more of the bus's own rules, e.g. a <deny .../> as a sandbox's policy has.
    explicit PrivateBus(const QString& policy = {}) {
        const QString config = m_dir.filePath(QStringLiteral("bus.conf"));
        QFile f(config);
        if (!f.open(QIODevice::WriteOnly))
            return;
        // Moc reads this header too, and it does not understand raw string literals.
        f.write(
            QStringLiteral("<busconfig><type>session</type><listen>unix:path=%1</listen>"
                           "<auth>EXTERNAL</auth><policy context=\"default\">"
                           "<allow send_destination=\"*\" eavesdrop=\"true\"/>"
                           "<allow eavesdrop=\"true\"/><allow own=\"*\"/>%2</policy></busconfig>")
                .arg(m_dir.filePath(QStringLiteral("bus")), policy)
                .toUtf8());
        f.close();
        // Gone with the test, even when the test crashes.
        m_daemon.setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGTERM); });
        m_daemon.start(QStringLiteral("dbus-daemon"),
                       {QStringLiteral("--config-file=") + config, QStringLiteral("--nofork"),
                        QStringLiteral("--nopidfile"), QStringLiteral("--print-address=1")});
        if (m_daemon.waitForReadyRead(5000))
            m_address = QString::fromUtf8(m_daemon.readLine()).trimmed();
    }
    ~PrivateBus() {
        m_daemon.terminate();
        if (!m_daemon.waitForFinished(2000))
            m_daemon.kill();
        m_daemon.waitForFinished(1000);
    }
    QString address() const { return m_address; }
    QDBusConnection connect(const QString& name) const {
        return QDBusConnection::connectToBus(m_address, name);
    }

private:
    QTemporaryDir m_dir{QStringLiteral("/tmp/mirl-bus-XXXXXX")};
    QProcess m_daemon;
    QString m_address;
};

} // namespace MirlTest
