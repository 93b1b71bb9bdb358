#include "platform/linux/x11/X11BlurBehind.h"

#include <vector>

// Xlib last: its macros must not reach Qt's headers.
#include <X11/Xatom.h>
#include <X11/Xlib.h>

namespace MirlPlayer {

X11BlurBehind::X11BlurBehind()
    : m_display(X11::openDisplay()) {
    if (m_display)
        m_atom = XInternAtom(m_display.get(), "_KDE_NET_WM_BLUR_BEHIND_REGION", False);
}

X11BlurBehind::~X11BlurBehind() = default;

bool X11BlurBehind::available() {
    if (!m_display)
        return false;
    Display* d = m_display.get();
    // The blur effect announces itself by keeping the property on the root window.
    int count = 0;
    X11::XPtr<Atom> props(XListProperties(d, DefaultRootWindow(d), &count));
    for (int i = 0; i < count; ++i) {
        if (props.get()[i] == m_atom)
            return true;
    }
    return false;
}

void X11BlurBehind::apply(unsigned long window, const QVector<QRect>& region) {
    if (!m_display || !window || (m_everApplied && region == m_applied))
        return;
    Display* d = m_display.get();
    if (region.isEmpty()) {
        XDeleteProperty(d, window, m_atom);
    } else {
        std::vector<unsigned long> data;
        data.reserve(size_t(region.size()) * 4);
        for (const QRect& r : region) {
            data.push_back(static_cast<unsigned long>(r.x()));
            data.push_back(static_cast<unsigned long>(r.y()));
            data.push_back(static_cast<unsigned long>(r.width()));
            data.push_back(static_cast<unsigned long>(r.height()));
        }
        XChangeProperty(d, window, m_atom, XA_CARDINAL, 32, PropModeReplace,
                        reinterpret_cast<const unsigned char*>(data.data()), int(data.size()));
    }
    XFlush(d);
    m_applied = region;
    m_everApplied = true;
}

} // namespace MirlPlayer
