#pragma once

#include <QByteArray>
#include <QRect>
#include <QString>
#include <sys/types.h>

struct _XDisplay;

namespace MirlPlayer::Test {

// A private X server (Xvfb) and session bus for one test process, started before the
// application object and stopped with it. Each child is stopped by its own pid.
class X11TestSession {
public:
    X11TestSession();
    ~X11TestSession();
    bool ok() const { return m_ok; }
    QString error() const { return m_error; }
    int displayNumber() const { return m_display; }

private:
    pid_t spawn(const QList<QByteArray>& args);
    bool m_ok = false;
    QString m_error;
    int m_display = 0;
    pid_t m_xvfb = 0;
    pid_t m_bus = 0;
    QByteArray m_busPath;
};

// A window of another (pretend) process, pid 99999 and class "Foreign", made with Xlib.
class ForeignWindow {
public:
    ForeignWindow(QRect geometry, bool overrideRedirect, bool fullscreen);
    ~ForeignWindow();
    ForeignWindow(const ForeignWindow&) = delete;
    ForeignWindow& operator=(const ForeignWindow&) = delete;

private:
    ::_XDisplay* m_display = nullptr;
    unsigned long m_window = 0;
};

} // namespace MirlPlayer::Test
