#pragma once

// A real mpv with its MPRIS plugin, started by a test on a bus of its choosing, playing the
// generated tracks of the test environment. Stopped (by its own pid) when the object goes.

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QDir>
#include <QProcess>
#include <QProcessEnvironment>
#include <csignal>
#include <sys/prctl.h>

namespace MirlTest {

class MpvProcess {
public:
    // `busAddress` empty: the session bus of the environment.
    explicit MpvProcess(const QString& busAddress = {}, bool paused = false) {
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        if (!busAddress.isEmpty())
            env.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), busAddress);
        m_process.setProcessEnvironment(env);
        m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_process.setStandardOutputFile(QProcess::nullDevice());
        const QDir music(qEnvironmentVariable("MIRL_TEST_MUSIC"));
        QStringList args{
            QStringLiteral("--no-config"),   QStringLiteral("--script=/usr/lib/mpv-mpris/mpris.so"),
            QStringLiteral("--ao=null"),     QStringLiteral("--no-video"),
            QStringLiteral("--no-terminal"), QStringLiteral("--loop-playlist=inf"),
            QStringLiteral("--idle=no")};
        if (paused)
            args << QStringLiteral("--pause");
        for (const QString& track :
             music.entryList({QStringLiteral("*.flac")}, QDir::Files, QDir::Name))
            args << music.filePath(track);
        // Gone with the test, even when the test crashes.
        m_process.setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGTERM); });
        m_process.start(QStringLiteral("mpv"), args);
        m_process.waitForStarted(5000);
    }
    ~MpvProcess() { stop(); }

    void stop() {
        if (m_process.state() == QProcess::NotRunning)
            return;
        m_process.kill();
        m_process.waitForFinished(3000);
    }
    qint64 pid() const { return m_process.processId(); }
    // The name mpv takes when another mpv already holds "org.mpris.MediaPlayer2.mpv".
    QString instanceName() const {
        return QStringLiteral("org.mpris.MediaPlayer2.mpv.instance%1").arg(pid());
    }

private:
    QProcess m_process;
};

// Reads a property of a player's org.mpris.MediaPlayer2.Player straight from the player.
inline QVariant playerProperty(const QDBusConnection& bus, const QString& service,
                               const QString& name) {
    QDBusMessage get = QDBusMessage::createMethodCall(
        service, QStringLiteral("/org/mpris/MediaPlayer2"),
        QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
    get << QStringLiteral("org.mpris.MediaPlayer2.Player") << name;
    const QDBusMessage reply = bus.call(get, QDBus::Block, 5000);
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty())
        return {};
    return reply.arguments().constFirst().value<QDBusVariant>().variant();
}

inline void callPlayer(const QDBusConnection& bus, const QString& service, const QString& method) {
    bus.call(QDBusMessage::createMethodCall(service, QStringLiteral("/org/mpris/MediaPlayer2"),
                                            QStringLiteral("org.mpris.MediaPlayer2.Player"),
                                            method),
             QDBus::Block, 5000);
}

} // namespace MirlTest
