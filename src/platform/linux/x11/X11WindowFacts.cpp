#include "platform/linux/x11/X11WindowFacts.h"

#include "platform/linux/x11/X11Screens.h"

#include <QCoreApplication>
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <vector>

#include <xcb/xcb.h>

namespace MirlPlayer {

namespace {

struct FreeReply {
    void operator()(void* p) const { std::free(p); }
};
template <typename T> using Reply = std::unique_ptr<T, FreeReply>;

// The 32-bit values of a property reply of the given type, or nothing.
std::optional<std::vector<quint32>> values32(const xcb_get_property_reply_t* r, quint32 type) {
    if (!r || r->type != type || r->format != 32)
        return std::nullopt;
    const auto* v = static_cast<const quint32*>(xcb_get_property_value(r));
    return std::vector<quint32>(v, v + xcb_get_property_value_length(r) / 4);
}

std::optional<quint32> first32(const xcb_get_property_reply_t* r, quint32 type) {
    auto v = values32(r, type);
    if (!v || v->empty())
        return std::nullopt;
    return v->front();
}

xcb_get_property_cookie_t askProperty(xcb_connection_t* c, quint32 window, quint32 property,
                                      quint32 type) {
    return xcb_get_property(c, 0, window, property, type, 0, 256);
}

} // namespace

void X11WindowFacts::Disconnect::operator()(xcb_connection_t* c) const {
    xcb_disconnect(c);
}

X11WindowFacts::X11WindowFacts() {
    int screen = 0;
    xcb_connection_t* c = xcb_connect(nullptr, &screen);
    if (xcb_connection_has_error(c)) {
        xcb_disconnect(c);
        return;
    }
    m_connection.reset(c);
    auto it = xcb_setup_roots_iterator(xcb_get_setup(c));
    for (int i = 0; i < screen && it.rem; ++i)
        xcb_screen_next(&it);
    m_root = it.data->root;

    static const char* const names[atomCount] = {"WM_STATE",
                                                 "WM_CLASS",
                                                 "_NET_WM_PID",
                                                 "_NET_WM_WINDOW_TYPE",
                                                 "_NET_WM_STATE",
                                                 "_NET_WM_STATE_HIDDEN",
                                                 "_NET_WM_WINDOW_OPACITY",
                                                 "_NET_WM_WINDOW_TYPE_DESKTOP",
                                                 "_NET_WM_WINDOW_TYPE_DOCK",
                                                 "_NET_WM_WINDOW_TYPE_NOTIFICATION",
                                                 "_NET_WM_WINDOW_TYPE_POPUP_MENU",
                                                 "_NET_WM_WINDOW_TYPE_DROPDOWN_MENU",
                                                 "_NET_WM_WINDOW_TYPE_COMBO",
                                                 "_NET_WM_WINDOW_TYPE_TOOLTIP",
                                                 "_NET_WM_WINDOW_TYPE_DND"};
    xcb_intern_atom_cookie_t cookies[atomCount];
    for (int i = 0; i < atomCount; ++i)
        cookies[i] = xcb_intern_atom(c, 0, uint16_t(std::strlen(names[i])), names[i]);
    for (int i = 0; i < atomCount; ++i) {
        Reply<xcb_intern_atom_reply_t> r(xcb_intern_atom_reply(c, cookies[i], nullptr));
        m_atoms[i] = r ? r->atom : 0;
    }
}

X11WindowFacts::~X11WindowFacts() = default;

qint64 X11WindowFacts::ownPid() const {
    return QCoreApplication::applicationPid();
}

quint32 X11WindowFacts::findClient(quint32 window, int depth) {
    xcb_connection_t* c = m_connection.get();
    Reply<xcb_get_property_reply_t> state(xcb_get_property_reply(
        c, askProperty(c, window, m_atoms[WM_STATE], m_atoms[WM_STATE]), nullptr));
    if (state && state->type == m_atoms[WM_STATE])
        return window;
    if (depth == 0)
        return 0;
    Reply<xcb_query_tree_reply_t> tree(xcb_query_tree_reply(c, xcb_query_tree(c, window), nullptr));
    if (!tree)
        return 0;
    const xcb_window_t* children = xcb_query_tree_children(tree.get());
    for (int i = xcb_query_tree_children_length(tree.get()); i-- > 0;) {
        if (const quint32 client = findClient(children[i], depth - 1))
            return client;
    }
    return 0;
}

X11WindowFacts::Facts X11WindowFacts::factsFor(quint32 topLevel) {
    auto it = m_facts.constFind(topLevel);
    if (it != m_facts.constEnd())
        return *it;
    xcb_connection_t* c = m_connection.get();
    Facts f;
    // A window manager reparents clients into frames; without one the top level is the client.
    f.client = findClient(topLevel, 2);
    if (!f.client)
        f.client = topLevel;
    const auto classCookie = askProperty(c, f.client, m_atoms[WM_CLASS], XCB_ATOM_STRING);
    const auto pidCookie = askProperty(c, f.client, m_atoms[NET_WM_PID], XCB_ATOM_CARDINAL);
    const auto typeCookie = askProperty(c, f.client, m_atoms[NET_WM_WINDOW_TYPE], XCB_ATOM_ATOM);
    Reply<xcb_get_property_reply_t> cls(xcb_get_property_reply(c, classCookie, nullptr));
    Reply<xcb_get_property_reply_t> pid(xcb_get_property_reply(c, pidCookie, nullptr));
    Reply<xcb_get_property_reply_t> type(xcb_get_property_reply(c, typeCookie, nullptr));
    if (cls && cls->type == XCB_ATOM_STRING && cls->format == 8) {
        // "instance\0class\0": the class is the second string.
        const char* data = static_cast<const char*>(xcb_get_property_value(cls.get()));
        const int len = xcb_get_property_value_length(cls.get());
        const QByteArray raw(data, len);
        const QList<QByteArray> parts = raw.split('\0');
        if (parts.size() >= 2 && !parts[1].isEmpty())
            f.owner = QString::fromLocal8Bit(parts[1]);
    }
    if (const auto p = first32(pid.get(), XCB_ATOM_CARDINAL))
        f.pid = qint64(*p);
    if (const auto t = first32(type.get(), XCB_ATOM_ATOM))
        f.type = *t;
    m_facts.insert(topLevel, f);
    return f;
}

std::optional<WindowList> X11WindowFacts::onScreenWindows() {
    if (!m_connection || xcb_connection_has_error(m_connection.get()))
        return std::nullopt;
    xcb_connection_t* c = m_connection.get();

    const auto rootGeometryCookie = xcb_get_geometry(c, m_root);
    Reply<xcb_query_tree_reply_t> tree(xcb_query_tree_reply(c, xcb_query_tree(c, m_root), nullptr));
    Reply<xcb_get_geometry_reply_t> rootGeometry(
        xcb_get_geometry_reply(c, rootGeometryCookie, nullptr));
    if (!tree || !rootGeometry)
        return std::nullopt;
    const xcb_window_t* children = xcb_query_tree_children(tree.get());
    const int n = xcb_query_tree_children_length(tree.get());

    // One round of attribute and geometry requests for every top-level window at once.
    std::vector<xcb_get_window_attributes_cookie_t> attrCookies(n);
    std::vector<xcb_get_geometry_cookie_t> geomCookies(n);
    for (int i = 0; i < n; ++i) {
        attrCookies[i] = xcb_get_window_attributes(c, children[i]);
        geomCookies[i] = xcb_get_geometry(c, children[i]);
    }
    struct Shown {
        quint32 window;
        bool overrideRedirect;
        Reply<xcb_get_geometry_reply_t> geometry;
    };
    std::vector<Shown> shown;
    for (int i = 0; i < n; ++i) {
        Reply<xcb_get_window_attributes_reply_t> a(
            xcb_get_window_attributes_reply(c, attrCookies[i], nullptr));
        Reply<xcb_get_geometry_reply_t> g(xcb_get_geometry_reply(c, geomCookies[i], nullptr));
        if (!a || !g || a->map_state != XCB_MAP_STATE_VIEWABLE ||
            a->_class == XCB_WINDOW_CLASS_INPUT_ONLY)
            continue;
        shown.push_back({children[i], bool(a->override_redirect), std::move(g)});
    }

    // Then one round for the properties that may change while a window is shown.
    QHash<quint32, Facts> alive;
    std::vector<Facts> facts;
    std::vector<xcb_get_property_cookie_t> stateCookies, opacityCookies;
    for (const auto& s : shown) {
        const Facts f = factsFor(s.window);
        alive.insert(s.window, f);
        facts.push_back(f);
        stateCookies.push_back(askProperty(c, f.client, m_atoms[NET_WM_STATE], XCB_ATOM_ATOM));
        opacityCookies.push_back(
            askProperty(c, f.client, m_atoms[NET_WM_WINDOW_OPACITY], XCB_ATOM_CARDINAL));
    }

    // The heuristics work in points, as the screens do.
    const double ratio = ScreenFlip::pixelRatio();
    WindowList list;
    for (size_t i = 0; i < shown.size(); ++i) {
        Reply<xcb_get_property_reply_t> state(xcb_get_property_reply(c, stateCookies[i], nullptr));
        Reply<xcb_get_property_reply_t> opacity(
            xcb_get_property_reply(c, opacityCookies[i], nullptr));
        const Facts& f = facts[i];
        if (f.type == m_atoms[TYPE_DESKTOP])
            continue;
        // A full-screen window needs no flag: its bounds tell, as the heuristics expect.
        if (const auto states = values32(state.get(), XCB_ATOM_ATOM)) {
            if (std::find(states->begin(), states->end(), m_atoms[NET_WM_STATE_HIDDEN]) !=
                states->end())
                continue;
        }
        const auto& g = *shown[i].geometry;
        WindowRecord r;
        r.owner = f.owner;
        r.pid = f.pid;
        const double border = g.border_width;
        r.bounds = WindowBounds{g.x / ratio, g.y / ratio, (g.width + 2 * border) / ratio,
                                (g.height + 2 * border) / ratio};
        if (const auto o = first32(opacity.get(), XCB_ATOM_CARDINAL))
            r.alpha = double(*o) / 0xffffffffu;

        const quint32 t = f.type;
        if (t && t == m_atoms[TYPE_DOCK]) {
            // A panel along the top edge is where the menu bar would be.
            r.layer = g.y <= 2 && g.width > g.height ? 25 : 20;
        } else if (t && t == m_atoms[TYPE_NOTIFICATION]) {
            r.layer = 23;
        } else if ((t && (t == m_atoms[TYPE_POPUP_MENU] || t == m_atoms[TYPE_DROPDOWN_MENU] ||
                          t == m_atoms[TYPE_COMBO] || t == m_atoms[TYPE_TOOLTIP] ||
                          t == m_atoms[TYPE_DND])) ||
                   (shown[i].overrideRedirect && t == 0)) {
            r.layer = 101;
        } else {
            r.layer = 0;
        }
        list.append(r);
    }
    // Forget windows that have gone, so the cache cannot grow or confuse a reused id.
    m_facts = std::move(alive);

    if (m_overview && m_overview()) {
        WindowRecord r;
        r.owner = QStringLiteral("Dock");
        r.layer = 18;
        r.pid = 0;
        r.alpha = 1.0;
        r.bounds =
            WindowBounds{0.0, 0.0, rootGeometry->width / ratio, rootGeometry->height / ratio};
        list.append(r);
    }
    return list;
}

} // namespace MirlPlayer
