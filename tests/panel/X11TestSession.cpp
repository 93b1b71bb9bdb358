#include "X11TestSession.h"

#include <QFile>
#include <QList>
#include <QSocketNotifier>
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <functional>
#include <spawn.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>

extern char** environ;

namespace MirlPlayer::Test {

pid_t X11TestSession::spawn(const QList<QByteArray>& args) {
    std::vector<char*> argv;
    for (const auto& a : args)
        argv.push_back(const_cast<char*>(a.constData()));
    argv.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
    pid_t pid = 0;
    const int rc = posix_spawnp(&pid, argv[0], &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    return rc == 0 ? pid : 0;
}

static bool waitFor(const std::function<bool()>& ready) {
    for (int i = 0; i < 100; ++i) {
        if (ready())
            return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    return false;
}

X11TestSession::X11TestSession(Bus bus) {
    // Display numbers below the shared ones, so parallel sessions on this machine do not meet.
    // Two tests may pick the same free number at once; the display is ours only when its lock
    // file names our own server, otherwise that server has given up and the next number is tried.
    QByteArray name;
    for (int n = 97; n > 80 && !m_display; --n) {
        const QString lock = QStringLiteral("/tmp/.X%1-lock").arg(n);
        if (QFile::exists(lock))
            continue;
        name = ":" + QByteArray::number(n);
        const pid_t xvfb = spawn({"Xvfb", name, "-screen", "0", "1512x982x24", "+extension", "GLX",
                                  "-nolisten", "tcp", "-noreset"});
        if (!xvfb)
            continue;
        bool exited = false;
        const bool ours =
            waitFor([&] {
                exited = waitpid(xvfb, nullptr, WNOHANG) == xvfb;
                if (exited)
                    return true; // it gave up: the display was taken
                QFile file(lock);
                if (!file.open(QIODevice::ReadOnly) || file.readAll().trimmed().toInt() != xvfb)
                    return false;
                Display* d = XOpenDisplay(name.constData());
                if (d)
                    XCloseDisplay(d);
                return d != nullptr;
            }) &&
            !exited;
        if (ours) {
            m_display = n;
            m_xvfb = xvfb;
        } else if (!exited) {
            kill(xvfb, SIGTERM);
            waitpid(xvfb, nullptr, 0);
        }
    }
    if (!m_display) {
        m_error = QStringLiteral("no private X server on any free display number");
        return;
    }
    qputenv("DISPLAY", name);
    qputenv("QT_QPA_PLATFORM", "xcb");
    qputenv("MIRL_PANEL_BACKEND", "x11"); // the private X server, whatever session runs the test
    if (bus == Bus::inherited) {
        m_ok = true;
        return;
    }

    m_busPath = "/tmp/mirl-panel-test-bus-" + QByteArray::number(getpid());
    m_bus = spawn({"dbus-daemon", "--session", "--nofork", "--address=unix:path=" + m_busPath});
    if (!m_bus || !waitFor([&] { return QFile::exists(QString::fromLocal8Bit(m_busPath)); })) {
        m_error = QStringLiteral("dbus-daemon did not start");
        return;
    }
    qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=" + m_busPath);
    m_ok = true;
}

X11TestSession::~X11TestSession() {
    for (pid_t pid : {m_bus, m_xvfb}) {
        if (pid > 0) {
            kill(pid, SIGTERM);
            waitpid(pid, nullptr, 0);
        }
    }
    if (!m_busPath.isEmpty())
        QFile::remove(QString::fromLocal8Bit(m_busPath));
}

ForeignWindow::ForeignWindow(QRect r, bool overrideRedirect, bool fullscreen)
    : ForeignWindow(r, [&] {
        Options o = Options::inState(fullscreen ? "_NET_WM_STATE_FULLSCREEN" : "");
        o.overrideRedirect = overrideRedirect;
        return o;
    }()) {}

ForeignWindow::ForeignWindow(QRect r, const Options& o) {
    m_display = XOpenDisplay(nullptr);
    if (!m_display)
        return;
    auto atom = [this](const QByteArray& name) {
        return XInternAtom(m_display, name.constData(), False);
    };
    auto setAtom = [&](const char* property, const QByteArray& value) {
        const Atom a = atom(value);
        XChangeProperty(m_display, m_window, atom(property), XA_ATOM, 32, PropModeReplace,
                        reinterpret_cast<const unsigned char*>(&a), 1);
    };
    XSetWindowAttributes attrs{};
    attrs.override_redirect = o.overrideRedirect ? True : False;
    attrs.background_pixel = 0x203040;
    m_window = XCreateWindow(m_display, DefaultRootWindow(m_display), r.x(), r.y(), r.width(),
                             r.height(), 0, CopyFromParent, InputOutput, CopyFromParent,
                             CWOverrideRedirect | CWBackPixel, &attrs);
    QByteArray cls = o.wmClass;
    XClassHint hint{const_cast<char*>("foreign"), cls.data()};
    XSetClassHint(m_display, m_window, &hint);
    const unsigned long pid = 99999;
    XChangeProperty(m_display, m_window, atom("_NET_WM_PID"), XA_CARDINAL, 32, PropModeReplace,
                    reinterpret_cast<const unsigned char*>(&pid), 1);
    if (!o.type.isEmpty())
        setAtom("_NET_WM_WINDOW_TYPE", o.type);
    if (!o.state.isEmpty())
        setAtom("_NET_WM_STATE", o.state);
    if (o.opacity) {
        const unsigned long v = *o.opacity;
        XChangeProperty(m_display, m_window, atom("_NET_WM_WINDOW_OPACITY"), XA_CARDINAL, 32,
                        PropModeReplace, reinterpret_cast<const unsigned char*>(&v), 1);
    }
    XMapRaised(m_display, m_window);
    XSync(m_display, False);
}

void ForeignWindow::setOpacity(unsigned long v) {
    XChangeProperty(m_display, m_window, XInternAtom(m_display, "_NET_WM_WINDOW_OPACITY", False),
                    XA_CARDINAL, 32, PropModeReplace, reinterpret_cast<const unsigned char*>(&v),
                    1);
    XSync(m_display, False);
}

void ForeignWindow::activate() {
    const Window w = m_window;
    XChangeProperty(m_display, DefaultRootWindow(m_display),
                    XInternAtom(m_display, "_NET_ACTIVE_WINDOW", False), XA_WINDOW, 32,
                    PropModeReplace, reinterpret_cast<const unsigned char*>(&w), 1);
    XSync(m_display, False);
}

ForeignWindow::~ForeignWindow() {
    if (!m_display)
        return;
    XDestroyWindow(m_display, m_window);
    XSync(m_display, False);
    XCloseDisplay(m_display);
}

StandInWindowManager::StandInWindowManager()
    : m_display(XOpenDisplay(nullptr)) {
    if (!m_display)
        return;
    XSelectInput(m_display, DefaultRootWindow(m_display), SubstructureRedirectMask);
    XSync(m_display, False);
    m_notifier =
        std::make_unique<QSocketNotifier>(ConnectionNumber(m_display), QSocketNotifier::Read);
    QObject::connect(m_notifier.get(), &QSocketNotifier::activated, [this] { pump(); });
}

void StandInWindowManager::pump() {
    const Atom active = XInternAtom(m_display, "_NET_ACTIVE_WINDOW", False);
    while (XPending(m_display)) {
        XEvent e;
        XNextEvent(m_display, &e);
        if (e.type == MapRequest) {
            XMapWindow(m_display, e.xmaprequest.window);
        } else if (e.type == ClientMessage && e.xclient.message_type == active) {
            sources.append(e.xclient.data.l[0]);
            const Window w = e.xclient.window;
            XChangeProperty(m_display, DefaultRootWindow(m_display), active, XA_WINDOW, 32,
                            PropModeReplace, reinterpret_cast<const unsigned char*>(&w), 1);
        }
    }
    XFlush(m_display);
}

StandInWindowManager::~StandInWindowManager() {
    m_notifier.reset();
    if (m_display)
        XCloseDisplay(m_display);
}

RootProperty::RootProperty(const char* name, QList<long> cardinals, const QList<QByteArray>& atoms)
    : m_display(XOpenDisplay(nullptr))
    , m_name(name) {
    if (!m_display)
        return;
    for (const auto& a : atoms)
        cardinals.append(long(XInternAtom(m_display, a.constData(), False)));
    XChangeProperty(m_display, DefaultRootWindow(m_display), XInternAtom(m_display, name, False),
                    atoms.isEmpty() ? XA_CARDINAL : XA_ATOM, 32, PropModeReplace,
                    reinterpret_cast<const unsigned char*>(cardinals.data()),
                    int(cardinals.size()));
    XSync(m_display, False);
}

RootProperty::~RootProperty() {
    if (!m_display)
        return;
    XDeleteProperty(m_display, DefaultRootWindow(m_display),
                    XInternAtom(m_display, m_name.constData(), False));
    XSync(m_display, False);
    XCloseDisplay(m_display);
}

} // namespace MirlPlayer::Test
