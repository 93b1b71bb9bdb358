#include "platform/linux/x11/X11Handles.h"

#include <cstring>

// Xlib last: its macros must not reach Qt's headers.
#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>

namespace MirlPlayer::X11 {

void DisplayCloser::operator()(Display* d) const {
    if (d)
        XCloseDisplay(d);
}

void XFreeDeleter::operator()(void* p) const {
    if (p)
        XFree(p);
}

DisplayHandle openDisplay() {
    installQuietErrorHandler();
    return DisplayHandle(XOpenDisplay(nullptr));
}

Atom Atoms::operator()(const char* name) {
    const QByteArray key(name);
    auto it = m_atoms.constFind(key);
    if (it != m_atoms.constEnd())
        return *it;
    const Atom atom = XInternAtom(m_display, name, False);
    m_atoms.insert(key, atom);
    return atom;
}

std::optional<std::vector<unsigned long>> cardinals(Display* d, Window w, Atom property,
                                                    Atom type) {
    Atom actualType = None;
    int format = 0;
    unsigned long count = 0;
    unsigned long after = 0;
    unsigned char* raw = nullptr;
    const int status = XGetWindowProperty(d, w, property, 0, 1024, False, type, &actualType,
                                          &format, &count, &after, &raw);
    XPtr<unsigned char> data(raw);
    if (status != Success || actualType != type || format != 32 || !data)
        return std::nullopt;
    // Format-32 data comes as longs, whatever the size of long.
    const auto* values = reinterpret_cast<const unsigned long*>(data.get());
    return std::vector<unsigned long>(values, values + count);
}

std::optional<unsigned long> cardinal(Display* d, Window w, Atom property, Atom type) {
    auto values = cardinals(d, w, property, type);
    if (!values || values->empty())
        return std::nullopt;
    return values->front();
}

std::optional<std::pair<QByteArray, QByteArray>> wmClass(Display* d, Window w) {
    XClassHint hint{nullptr, nullptr};
    if (!XGetClassHint(d, w, &hint))
        return std::nullopt;
    XPtr<char> name(hint.res_name);
    XPtr<char> cls(hint.res_class);
    return std::pair{QByteArray(name ? name.get() : ""), QByteArray(cls ? cls.get() : "")};
}

static int quietErrorHandler(Display*, XErrorEvent*) {
    return 0;
}

void installQuietErrorHandler() {
    static const bool installed = [] {
        XSetErrorHandler(&quietErrorHandler);
        return true;
    }();
    (void)installed;
}

} // namespace MirlPlayer::X11
