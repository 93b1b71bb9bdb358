#pragma once

// Integration tests run inside the private environment of scripts/test-env: their own session
// bus, PipeWire with a null sink, WirePlumber, pipewire-pulse and (unless MIRL_TEST_ENV_PLAYER
// is 0) mpv. CTest brings one up for the tests that share it and names its file of variables in
// MIRL_TEST_ENV_FILE; a developer running a test by hand can instead
// `eval "$(scripts/test-env up)"` first. Call useTestEnv() before anything touches the session
// bus or PipeWire. Tests that need a session of their own use PrivateAudioSession, which brings
// one up through the same script.

#include <QByteArray>
#include <QFile>
#include <QRegularExpression>
#include <QString>

namespace MirlTest {

// Exports the `export NAME='value'` lines of a file written by scripts/test-env.
inline bool exportTestEnv(const QString& path) {
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly))
        return false;
    static const QRegularExpression line(QStringLiteral("^export ([A-Z_]+)='([^']*)'$"));
    const auto lines = QString::fromUtf8(f.readAll()).split(u'\n');
    for (const QString& text : lines) {
        const auto m = line.match(text);
        if (m.hasMatch())
            qputenv(m.captured(1).toLatin1(), m.captured(2).toLocal8Bit());
    }
    return true;
}

// Exports the environment's variables into this process. False when there is no environment.
inline bool useTestEnv() {
    const QByteArray file = qgetenv("MIRL_TEST_ENV_FILE");
    if (!file.isEmpty() && !exportTestEnv(QString::fromLocal8Bit(file)))
        return false;
    return !qgetenv("MIRL_TEST_ENV").isEmpty() && !qgetenv("DBUS_SESSION_BUS_ADDRESS").isEmpty();
}

} // namespace MirlTest
