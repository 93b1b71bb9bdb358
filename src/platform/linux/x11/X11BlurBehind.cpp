#include "platform/linux/x11/X11BlurBehind.h"

#include "platform/linux/x11/X11Connection.h"

#include <vector>
#include <xcb/xcb.h>

namespace MirlPlayer {

namespace {

const char* const blurRegion = "_KDE_NET_WM_BLUR_BEHIND_REGION";

} // namespace

bool X11BlurBehind::available() {
    if (m_askedAt.isValid() && m_askedAt.elapsed() < 2000)
        return m_available;
    m_askedAt.start();
    m_available = false;
    xcb_connection_t* c = X11::connection();
    if (!c)
        return false;
    // The blur effect announces itself by keeping the property on the root window.
    const X11::Reply<xcb_list_properties_reply_t> reply(
        xcb_list_properties_reply(c, xcb_list_properties(c, X11::rootWindow()), nullptr));
    if (!reply)
        return false;
    const xcb_atom_t wanted = X11::atom(blurRegion);
    const xcb_atom_t* atoms = xcb_list_properties_atoms(reply.get());
    const int count = xcb_list_properties_atoms_length(reply.get());
    for (int i = 0; i < count; ++i) {
        if (atoms[i] == wanted)
            m_available = true;
    }
    return m_available;
}

void X11BlurBehind::apply(unsigned long window, const QVector<QRect>& region) {
    xcb_connection_t* c = X11::connection();
    if (!c || !window || (m_everApplied && region == m_applied))
        return;
    const xcb_atom_t property = X11::atom(blurRegion);
    if (region.isEmpty()) {
        xcb_delete_property(c, xcb_window_t(window), property);
    } else {
        std::vector<quint32> data;
        data.reserve(size_t(region.size()) * 4);
        for (const QRect& r : region) {
            data.push_back(quint32(r.x()));
            data.push_back(quint32(r.y()));
            data.push_back(quint32(r.width()));
            data.push_back(quint32(r.height()));
        }
        xcb_change_property(c, XCB_PROP_MODE_REPLACE, xcb_window_t(window), property,
                            XCB_ATOM_CARDINAL, 32, quint32(data.size()), data.data());
    }
    xcb_flush(c);
    m_applied = region;
    m_everApplied = true;
}

} // namespace MirlPlayer
