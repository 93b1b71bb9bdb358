#pragma once

#include "platform/Pointer.h"
#include "platform/WindowFacts.h"

#include <QAbstractNativeEventFilter>
#include <functional>
#include <optional>

namespace MirlPlayer {

// Spares the panel's tick its X round trips while nothing can have changed. The X server says
// when the pointer moves or a button goes (XInput 2 raw events on the root, which arrive
// whatever window is under the pointer and through grabs) and when the window list may differ
// (the root's substructure and properties); until then the last readings stand. Works on Qt's
// own connection only, where Qt reads the events; elsewhere every reading asks the server as
// before.
class X11ChangeWatch : private QAbstractNativeEventFilter {
public:
    X11ChangeWatch();
    ~X11ChangeWatch() override;
    X11ChangeWatch(const X11ChangeWatch&) = delete;
    X11ChangeWatch& operator=(const X11ChangeWatch&) = delete;

    bool watchesPointer() const { return m_pointerEvents; }
    bool watchesWindows() const { return m_windowEvents; }
    // Whether something happened since the last call, which clears the mark. True while the
    // kind of change is not watched.
    bool takePointerChange();
    bool takeWindowChange();

private:
    bool nativeEventFilter(const QByteArray& eventType, void* message, qintptr* result) override;

    bool m_pointerEvents = false;
    bool m_windowEvents = false;
    bool m_pointerMoved = true;
    bool m_windowsChanged = true;
    quint8 m_xinputOpcode = 0;
};

// The pointer read again only after the X server reported motion or a button, or after `maxAge`
// seconds: a warp by another program moves it without a raw event.
class WatchedPointer : public Pointer {
public:
    static constexpr double maxAge = 1.0;

    WatchedPointer(Pointer& inner, X11ChangeWatch& watch, std::function<double()> now)
        : m_inner(inner)
        , m_watch(watch)
        , m_now(std::move(now)) {}
    PointerReading read() override;

private:
    Pointer& m_inner;
    X11ChangeWatch& m_watch;
    std::function<double()> m_now;
    std::optional<PointerReading> m_last;
    double m_readAt = 0;
};

// The window list read again only after the X server reported a change among the top-level
// windows or on the root, when `extraState` (facts that do not come from X, such as a shell's
// overview) differs, or after `maxAge` seconds, for the changes no root event announces.
class WatchedWindowFacts : public WindowFacts {
public:
    static constexpr double maxAge = 1.0;

    WatchedWindowFacts(WindowFacts& inner, X11ChangeWatch& watch, std::function<double()> now)
        : m_inner(inner)
        , m_watch(watch)
        , m_now(std::move(now)) {}
    void setExtraState(std::function<bool()> state) { m_extra = std::move(state); }
    std::optional<WindowList> onScreenWindows() override;
    qint64 ownPid() const override { return m_inner.ownPid(); }

private:
    WindowFacts& m_inner;
    X11ChangeWatch& m_watch;
    std::function<double()> m_now;
    std::function<bool()> m_extra;
    std::optional<WindowList> m_last;
    bool m_lastExtra = false;
    double m_readAt = 0;
};

} // namespace MirlPlayer
