#pragma once

#include <QByteArray>
#include <QHash>
#include <memory>
#include <optional>
#include <vector>

// Xlib's own header defines macros (Bool, None, Status) that clash with Qt's, so headers name
// its types by their underlying ones and only the .cpp files include it.
struct _XDisplay;

namespace MirlPlayer::X11 {

using Display = ::_XDisplay;
using Window = unsigned long;
using Atom = unsigned long;

struct DisplayCloser {
    void operator()(Display* d) const;
};
// An own connection to the X server, closed with its owner.
using DisplayHandle = std::unique_ptr<Display, DisplayCloser>;

// Opens a connection to $DISPLAY; empty when there is no X server (Wayland-only, headless).
DisplayHandle openDisplay();

struct XFreeDeleter {
    void operator()(void* p) const;
};
template <typename T> using XPtr = std::unique_ptr<T, XFreeDeleter>;

// Interned atoms, looked up once per connection.
class Atoms {
public:
    explicit Atoms(Display* display)
        : m_display(display) {}
    Atom operator()(const char* name);

private:
    Display* m_display;
    QHash<QByteArray, Atom> m_atoms;
};

// Typed reads of window properties. Each answers nothing when the property is missing, of
// another type, or the window has gone (errors are swallowed by the installed handler).
std::optional<std::vector<unsigned long>> cardinals(Display* d, Window w, Atom property, Atom type);
std::optional<unsigned long> cardinal(Display* d, Window w, Atom property, Atom type);
// WM_CLASS as (instance, class).
std::optional<std::pair<QByteArray, QByteArray>> wmClass(Display* d, Window w);

// Makes X protocol errors (a window vanishing between two requests) harmless for the whole
// process. Installed once; Qt's own connection uses xcb and is not affected.
void installQuietErrorHandler();

} // namespace MirlPlayer::X11
