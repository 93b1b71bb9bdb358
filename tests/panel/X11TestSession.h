#pragma once

#include <QByteArray>
#include <QList>
#include <QRect>
#include <QString>
#include <memory>
#include <optional>
#include <sys/types.h>

struct _XDisplay;
class QSocketNotifier;

namespace MirlPlayer::Test {

// A private X server (Xvfb) and, unless the test brings its own, a session bus for one test
// process, started before the application object and stopped with it. Each child is stopped by
// its own pid.
class X11TestSession {
public:
    enum class Bus { own, inherited };
    explicit X11TestSession(Bus bus = Bus::own);
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
    struct Options {
        bool overrideRedirect = false;
        QByteArray type;  // a _NET_WM_WINDOW_TYPE_* name
        QByteArray state; // a _NET_WM_STATE_* name
        std::optional<unsigned long> opacity;
        QByteArray wmClass = "Foreign";

        static Options ofType(QByteArray type, bool overrideRedirect = false) {
            Options o;
            o.type = type;
            o.overrideRedirect = overrideRedirect;
            return o;
        }
        static Options inState(QByteArray state) {
            Options o;
            o.state = state;
            return o;
        }
        static Options ofClass(QByteArray wmClass) {
            Options o;
            o.wmClass = wmClass;
            return o;
        }
    };
    ForeignWindow(QRect geometry, const Options& options);
    ForeignWindow(QRect geometry, bool overrideRedirect, bool fullscreen);
    unsigned long id() const { return m_window; }
    // Makes this window the active one, as a window manager would.
    void activate();
    void setOpacity(unsigned long opacity);
    ~ForeignWindow();
    ForeignWindow(const ForeignWindow&) = delete;
    ForeignWindow& operator=(const ForeignWindow&) = delete;

private:
    ::_XDisplay* m_display = nullptr;
    unsigned long m_window = 0;
};

// The part of a window manager that activation requests need: a client message
// _NET_ACTIVE_WINDOW makes its window the active one, and map requests are granted. Events are
// read whenever the test's event loop runs.
class StandInWindowManager {
public:
    StandInWindowManager();
    ~StandInWindowManager();
    // The source indication of each activation request, in order.
    QList<long> sources;

private:
    void pump();
    ::_XDisplay* m_display = nullptr;
    std::unique_ptr<QSocketNotifier> m_notifier;
};

// A property on the root window, as a window manager would set it, removed again with its
// owner: cardinals, or atoms when names are given.
class RootProperty {
public:
    RootProperty(const char* name, QList<long> cardinals, const QList<QByteArray>& atoms = {});
    ~RootProperty();
    RootProperty(const RootProperty&) = delete;
    RootProperty& operator=(const RootProperty&) = delete;

private:
    ::_XDisplay* m_display = nullptr;
    QByteArray m_name;
};

} // namespace MirlPlayer::Test
