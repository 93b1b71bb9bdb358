#pragma once

// Integration tests run inside the private environment of scripts/test-env. CTest brings it up
// and names the file of variables in MIRL_TEST_ENV_FILE; a developer running a test by hand can
// instead `eval "$(scripts/test-env up)"` first. Call useTestEnv() before anything touches the
// session bus or PipeWire.

#include <QByteArray>
#include <QFile>
#include <QRegularExpression>
#include <QString>

namespace MirlTest {

// Exports the environment's variables into this process. False when there is no environment.
inline bool useTestEnv() {
    const QByteArray file = qgetenv("MIRL_TEST_ENV_FILE");
    if (!file.isEmpty()) {
        QFile f(QString::fromLocal8Bit(file));
        if (!f.open(QIODevice::ReadOnly))
            return false;
        static const QRegularExpression line(QStringLiteral("^export ([A-Z_]+)='([^']*)'$"));
        const auto lines = QString::fromUtf8(f.readAll()).split(u'\n');
        for (const QString& text : lines) {
            const auto m = line.match(text);
            if (m.hasMatch())
                qputenv(m.captured(1).toLatin1(), m.captured(2).toLocal8Bit());
        }
    }
    return !qgetenv("MIRL_TEST_ENV").isEmpty() && !qgetenv("DBUS_SESSION_BUS_ADDRESS").isEmpty();
}

} // namespace MirlTest
