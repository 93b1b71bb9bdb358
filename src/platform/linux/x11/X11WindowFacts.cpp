#include "platform/linux/x11/X11WindowFacts.h"

#include "platform/linux/x11/X11Connection.h"
#include "platform/linux/x11/X11Screens.h"

#include <QCoreApplication>
#include <QGuiApplication>
#include <QScreen>
#include <algorithm>

#include <xcb/xcb.h>

namespace MirlPlayer {

using namespace X11;

X11WindowFacts::X11WindowFacts() = default;
X11WindowFacts::~X11WindowFacts() = default;

bool X11WindowFacts::connected() const {
    return X11::connection() != nullptr;
}

qint64 X11WindowFacts::ownPid() const {
    // Asked by the placement tests several times a second; a process keeps its pid.
    static const qint64 pid = QCoreApplication::applicationPid();
    return pid;
}

const QList<QByteArray>& X11WindowFacts::propertiesRead() {
    static const QList<QByteArray> names{"WM_STATE",
                                         "WM_CLASS",
                                         "_NET_WM_PID",
                                         "_NET_WM_WINDOW_TYPE",
                                         "_NET_WM_STATE",
                                         "_NET_WM_WINDOW_OPACITY",
                                         "_NET_WM_STRUT_PARTIAL",
                                         "_NET_SUPPORTED",
                                         "_NET_WORKAREA",
                                         "_NET_SUPPORTING_WM_CHECK",
                                         "_NET_CURRENT_DESKTOP"};
    return names;
}

quint32 X11WindowFacts::findClient(quint32 window, int depth) {
    xcb_connection_t* c = connection();
    const quint32 wmState = atom("WM_STATE");
    PropertyReply state = reply(askProperty(window, wmState, wmState));
    if (state && state->type == wmState)
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
    Facts f;
    // A window manager reparents clients into frames; without one the top level is the client.
    f.client = findClient(topLevel, 2);
    if (!f.client)
        f.client = topLevel;
    if (m_newClient)
        m_newClient(f.client);
    const unsigned classCookie = askProperty(f.client, atom("WM_CLASS"), XCB_ATOM_STRING);
    const unsigned pidCookie = askProperty(f.client, atom("_NET_WM_PID"), XCB_ATOM_CARDINAL);
    const unsigned typeCookie = askProperty(f.client, atom("_NET_WM_WINDOW_TYPE"), XCB_ATOM_ATOM);
    if (const auto cls = wmClass(reply(classCookie).get()))
        f.owner = QString::fromLocal8Bit(*cls);
    if (const auto p = first32(reply(pidCookie).get(), XCB_ATOM_CARDINAL))
        f.pid = qint64(*p);
    if (const auto t = first32(reply(typeCookie).get(), XCB_ATOM_ATOM)) {
        f.typed = true;
        using Kind = X11Window::Kind;
        if (*t == atom("_NET_WM_WINDOW_TYPE_DESKTOP"))
            f.kind = Kind::desktop;
        else if (*t == atom("_NET_WM_WINDOW_TYPE_DOCK"))
            f.kind = Kind::dock;
        else if (*t == atom("_NET_WM_WINDOW_TYPE_NOTIFICATION"))
            f.kind = Kind::notification;
        else if (*t == atom("_NET_WM_WINDOW_TYPE_POPUP_MENU") ||
                 *t == atom("_NET_WM_WINDOW_TYPE_DROPDOWN_MENU") ||
                 *t == atom("_NET_WM_WINDOW_TYPE_COMBO") ||
                 *t == atom("_NET_WM_WINDOW_TYPE_TOOLTIP") || *t == atom("_NET_WM_WINDOW_TYPE_DND"))
            f.kind = Kind::menu;
    }
    m_facts.insert(topLevel, f);
    return f;
}

X11Desktop X11WindowFacts::readDesktop(const QRect& root) {
    const quint32 rootWin = rootWindow();
    const unsigned supportedCookie =
        askProperty(rootWin, atom("_NET_SUPPORTED"), XCB_ATOM_ATOM, 4096);
    const unsigned checkCookie =
        askProperty(rootWin, atom("_NET_SUPPORTING_WM_CHECK"), XCB_ATOM_WINDOW);
    const unsigned areaCookie =
        askProperty(rootWin, atom("_NET_WORKAREA"), XCB_ATOM_CARDINAL, 4096);
    const unsigned desktopCookie =
        askProperty(rootWin, atom("_NET_CURRENT_DESKTOP"), XCB_ATOM_CARDINAL);

    X11Desktop d;
    d.root = root;
    d.pixelRatio = ScreenFlip::pixelRatio();
    // QScreen keeps each screen's top left in the server's pixels and scales only the size.
    for (const QScreen* s : QGuiApplication::screens()) {
        const QRect g = s->geometry();
        d.screens.append(QRect(g.topLeft(), (QSizeF(g.size()) * s->devicePixelRatio()).toSize()));
    }
    if (d.screens.isEmpty())
        d.screens.append(root);
    if (const auto supported = values32(reply(supportedCookie).get(), XCB_ATOM_ATOM)) {
        d.fullScreenKnown = std::find(supported->begin(), supported->end(),
                                      atom("_NET_WM_STATE_FULLSCREEN")) != supported->end();
    }
    const PropertyReply area = reply(areaCookie);
    const auto current = first32(reply(desktopCookie).get(), XCB_ATOM_CARDINAL).value_or(0);
    if (const auto v = values32(area.get(), XCB_ATOM_CARDINAL); v && v->size() >= 4 * (current + 1))
        d.workArea = QRect(int((*v)[4 * current]), int((*v)[4 * current + 1]),
                           int((*v)[4 * current + 2]), int((*v)[4 * current + 3]));
    if (const auto wm = first32(reply(checkCookie).get(), XCB_ATOM_WINDOW)) {
        const PropertyReply name =
            reply(askProperty(*wm, atom("_NET_WM_NAME"), atom("UTF8_STRING")));
        if (name && name->format == 8)
            d.managerName =
                QString::fromUtf8(static_cast<const char*>(xcb_get_property_value(name.get())),
                                  xcb_get_property_value_length(name.get()));
    }
    d.overview = m_overview && m_overview();
    return d;
}

std::optional<WindowList> X11WindowFacts::onScreenWindows() {
    xcb_connection_t* c = connection();
    if (!c)
        return std::nullopt;
    const quint32 root = rootWindow();

    const auto rootGeometryCookie = xcb_get_geometry(c, root);
    Reply<xcb_query_tree_reply_t> tree(xcb_query_tree_reply(c, xcb_query_tree(c, root), nullptr));
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
    std::vector<X11Window> stack;
    std::vector<quint32> windows;
    for (int i = 0; i < n; ++i) {
        Reply<xcb_get_window_attributes_reply_t> a(
            xcb_get_window_attributes_reply(c, attrCookies[i], nullptr));
        Reply<xcb_get_geometry_reply_t> g(xcb_get_geometry_reply(c, geomCookies[i], nullptr));
        if (!a || !g || a->map_state != XCB_MAP_STATE_VIEWABLE ||
            a->_class == XCB_WINDOW_CLASS_INPUT_ONLY)
            continue;
        X11Window w;
        const int border = g->border_width;
        w.geometry = QRect(g->x, g->y, g->width + 2 * border, g->height + 2 * border);
        w.overrideRedirect = a->override_redirect;
        stack.push_back(w);
        windows.push_back(children[i]);
    }

    // Then one round for the properties that may change while a window is shown.
    QHash<quint32, Facts> alive;
    std::vector<unsigned> stateCookies, opacityCookies, strutCookies;
    for (size_t i = 0; i < stack.size(); ++i) {
        const Facts f = factsFor(windows[i]);
        alive.insert(windows[i], f);
        X11Window& w = stack[i];
        w.owner = f.owner;
        w.pid = f.pid;
        w.kind = !f.typed && w.overrideRedirect ? X11Window::Kind::menu : f.kind;
        stateCookies.push_back(askProperty(f.client, atom("_NET_WM_STATE"), XCB_ATOM_ATOM));
        opacityCookies.push_back(
            askProperty(f.client, atom("_NET_WM_WINDOW_OPACITY"), XCB_ATOM_CARDINAL));
        strutCookies.push_back(
            w.kind == X11Window::Kind::dock
                ? askProperty(f.client, atom("_NET_WM_STRUT_PARTIAL"), XCB_ATOM_CARDINAL)
                : 0);
    }
    const X11Desktop desktop = readDesktop(QRect(0, 0, rootGeometry->width, rootGeometry->height));
    for (size_t i = 0; i < stack.size(); ++i) {
        X11Window& w = stack[i];
        if (const auto states = values32(reply(stateCookies[i]).get(), XCB_ATOM_ATOM)) {
            auto has = [&](const char* name) {
                return std::find(states->begin(), states->end(), atom(name)) != states->end();
            };
            w.hidden = has("_NET_WM_STATE_HIDDEN");
            w.fullScreen = has("_NET_WM_STATE_FULLSCREEN");
        }
        if (const auto o = first32(reply(opacityCookies[i]).get(), XCB_ATOM_CARDINAL))
            w.alpha = double(*o) / 0xffffffffu;
        // left, right, top, bottom, then start and end of each: the top's columns are 8 and 9.
        if (const auto s = values32(reply(strutCookies[i]).get(), XCB_ATOM_CARDINAL);
            s && s->size() >= 10) {
            w.strutTop = int((*s)[2]);
            w.strutSpan = {int((*s)[8]), int((*s)[9])};
        }
    }
    // Forget windows that have gone, so the cache cannot grow or confuse a reused id.
    m_facts = std::move(alive);
    return windowRecords(stack, desktop);
}

} // namespace MirlPlayer
