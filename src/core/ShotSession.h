#pragma once

#include <QByteArray>
#include <QEventLoop>
#include <QString>
#include <QTemporaryDir>
#include <QTimer>

// What the demo's picture tools share: a throwaway home, so a picture never reads or writes the
// user's own settings, and a way to let the windows settle between pictures.
namespace MirlPlayer::ShotSession {

// Points every XDG folder into `home`; call before the application object exists.
inline void usePrivateHome(const QTemporaryDir& home) {
    for (const char* name :
         {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_STATE_HOME", "XDG_CACHE_HOME"})
        qputenv(name, home.filePath(QString::fromLatin1(name)).toUtf8());
}

// Runs the event loop for `ms`, so animations and deferred loads finish before a picture.
inline void settle(int ms) {
    QEventLoop loop;
    QTimer::singleShot(ms, &loop, &QEventLoop::quit);
    loop.exec();
}

} // namespace MirlPlayer::ShotSession
