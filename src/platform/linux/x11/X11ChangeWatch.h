#pragma once

#include "platform/Pointer.h"
#include "platform/WindowFacts.h"

#include <QAbstractNativeEventFilter>
#include <QList>
#include <QObject>
#include <functional>
#include <optional>

namespace MirlPlayer {

// Spares the panel's tick its X round trips while nothing can have changed. The X server says
// when the pointer moves or a button goes (XInput 2 raw events on the root, which arrive
// whatever window is under the pointer and through grabs; a warp by another program makes no
// raw event, so the root's own motion and crossing events stand in for the warps that land on
// or leave the bare desktop) and when the window list may differ (the root's substructure and
// properties, the properties of every other client's window the list has shown, see
// `watchWindow`, and Qt's screens; of the properties only those the list reads count); until then
// the last readings stand. Works on Qt's own connection only, where Qt reads the events; elsewhere
// every reading asks the server as before.
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
    // Asks for the property changes of a window of another client, so that a change of its
    // state, opacity or struts marks the list. Called for each window when it first appears in
    // the list, before its properties are read; this process's own windows are left alone.
    void watchWindow(quint32 window);

private:
    bool nativeEventFilter(const QByteArray& eventType, void* message, qintptr* result) override;

    bool m_pointerEvents = false;
    bool m_windowEvents = false;
    bool m_pointerMoved = true;
    bool m_windowsChanged = true;
    quint8 m_xinputOpcode = 0;
    quint32 m_root = 0;
    QList<quint32> m_listAtoms; // the properties the window list reads
    // The ids of this connection's own windows: (id & ~mask) == base.
    quint32 m_ownIdBase = 0;
    quint32 m_ownIdMask = 0;
    QObject m_screenWatch; // the screens' connections go with the watch
};

// The pointer read again only after the X server reported motion, a crossing or a button.
class WatchedPointer : public Pointer {
public:
    WatchedPointer(Pointer& inner, X11ChangeWatch& watch)
        : m_inner(inner)
        , m_watch(watch) {}
    PointerReading read() override;

private:
    Pointer& m_inner;
    X11ChangeWatch& m_watch;
    std::optional<PointerReading> m_last;
};

// The window list read again only after the X server reported a change among the windows or on
// the root, or when `extraState` (facts that do not come from X, such as a shell's overview)
// differs.
class WatchedWindowFacts : public WindowFacts {
public:
    WatchedWindowFacts(WindowFacts& inner, X11ChangeWatch& watch)
        : m_inner(inner)
        , m_watch(watch) {}
    void setExtraState(std::function<bool()> state) { m_extra = std::move(state); }
    std::optional<WindowList> onScreenWindows() override;
    qint64 ownPid() const override { return m_inner.ownPid(); }

private:
    WindowFacts& m_inner;
    X11ChangeWatch& m_watch;
    std::function<bool()> m_extra;
    std::optional<WindowList> m_last;
    bool m_lastExtra = false;
};

} // namespace MirlPlayer
