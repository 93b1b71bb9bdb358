#pragma once

#include <QApplication>
#include <QByteArray>
#include <QDir>
#include <QEventLoop>
#include <QString>
#include <QTemporaryDir>
#include <QTimer>

namespace MirlPlayer {

// The process of one of the demo's picture tools: a throwaway home, set before the application
// exists so that nothing the windows read or write is the user's own; the application; and the
// folder the pictures go to (the first argument, else the current folder).
class ShotApplication {
public:
    ShotApplication(int& argc, char** argv)
        : m_app(argc, argv)
        , m_out(argc > 1 ? QString::fromLocal8Bit(argv[1]) : QDir::currentPath()) {
        QApplication::setApplicationName(QStringLiteral("MIRL PRO"));
    }

    QString path(const QString& file) const { return m_out.filePath(file); }

    // Runs the event loop for `ms`, so animations and deferred loads finish before a picture.
    static void settle(int ms) {
        QEventLoop loop;
        QTimer::singleShot(ms, &loop, &QEventLoop::quit);
        loop.exec();
    }

private:
    static bool usePrivateHome(const QTemporaryDir& home) {
        for (const char* name :
             {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_STATE_HOME", "XDG_CACHE_HOME"})
            qputenv(name, home.filePath(QString::fromLatin1(name)).toUtf8());
        return true;
    }

    QTemporaryDir m_home;
    bool m_homeSet = usePrivateHome(m_home); // before m_app: members start in this order
    QApplication m_app;
    QDir m_out;
};

} // namespace MirlPlayer
