#include "platform/linux/x11/X11WindowFacts.h"

#include <QCoreApplication>
#include <algorithm>

// Xlib last: its macros must not reach Qt's headers.
#include <X11/Xatom.h>
#include <X11/Xlib.h>

namespace MirlPlayer {

using namespace X11;

X11WindowFacts::X11WindowFacts()
    : m_display(openDisplay()) {
    if (m_display)
        m_atoms = std::make_unique<Atoms>(m_display.get());
}

X11WindowFacts::~X11WindowFacts() = default;

qint64 X11WindowFacts::ownPid() const {
    return QCoreApplication::applicationPid();
}

Window X11WindowFacts::findClient(Window w, int depth) {
    Display* d = m_display.get();
    if (cardinal(d, w, (*m_atoms)("WM_STATE"), (*m_atoms)("WM_STATE")))
        return w;
    if (depth == 0)
        return 0;
    Window root = 0, parent = 0;
    Window* raw = nullptr;
    unsigned int n = 0;
    if (!XQueryTree(d, w, &root, &parent, &raw, &n))
        return 0;
    XPtr<Window> children(raw);
    for (unsigned int i = n; i-- > 0;) {
        if (const Window c = findClient(children.get()[i], depth - 1))
            return c;
    }
    return 0;
}

X11WindowFacts::Facts X11WindowFacts::factsFor(Window topLevel) {
    auto it = m_facts.constFind(topLevel);
    if (it != m_facts.constEnd())
        return *it;
    Display* d = m_display.get();
    Atoms& atom = *m_atoms;
    Facts f;
    // A window manager reparents clients into frames; without one the top level is the client.
    f.client = findClient(topLevel, 2);
    if (!f.client)
        f.client = topLevel;
    if (const auto cls = wmClass(d, f.client); cls && !cls->second.isEmpty())
        f.owner = QString::fromLocal8Bit(cls->second);
    if (const auto pid = cardinal(d, f.client, atom("_NET_WM_PID"), XA_CARDINAL))
        f.pid = qint64(*pid);
    if (const auto type = cardinal(d, f.client, atom("_NET_WM_WINDOW_TYPE"), XA_ATOM))
        f.type = Atom(*type);
    m_facts.insert(topLevel, f);
    return f;
}

std::optional<WindowList> X11WindowFacts::onScreenWindows() {
    if (!m_display)
        return std::nullopt;
    Display* d = m_display.get();
    Atoms& atom = *m_atoms;
    const Window root = DefaultRootWindow(d);

    Window rootReturn = 0, parent = 0;
    Window* raw = nullptr;
    unsigned int n = 0;
    if (!XQueryTree(d, root, &rootReturn, &parent, &raw, &n))
        return std::nullopt;
    XPtr<Window> children(raw);

    XWindowAttributes rootAttrs;
    if (!XGetWindowAttributes(d, root, &rootAttrs))
        return std::nullopt;

    WindowList list;
    QHash<Window, Facts> alive;
    for (unsigned int i = 0; i < n; ++i) {
        const Window w = children.get()[i];
        XWindowAttributes a;
        if (!XGetWindowAttributes(d, w, &a) || a.map_state != IsViewable || a.c_class == InputOnly)
            continue;
        const Facts f = factsFor(w);
        alive.insert(w, f);
        if (f.type == atom("_NET_WM_WINDOW_TYPE_DESKTOP"))
            continue;

        // A full-screen window needs no flag: its bounds tell, as the heuristics expect.
        if (const auto states = cardinals(d, f.client, atom("_NET_WM_STATE"), XA_ATOM)) {
            if (std::find(states->begin(), states->end(), atom("_NET_WM_STATE_HIDDEN")) !=
                states->end())
                continue;
        }

        WindowRecord r;
        r.owner = f.owner;
        r.pid = f.pid;
        const double bw = a.border_width;
        r.bounds = WindowBounds{double(a.x), double(a.y), a.width + 2 * bw, a.height + 2 * bw};
        if (const auto opacity = cardinal(d, f.client, atom("_NET_WM_WINDOW_OPACITY"), XA_CARDINAL))
            r.alpha = double(*opacity) / 0xffffffffu;

        const Atom t = f.type;
        if (t == atom("_NET_WM_WINDOW_TYPE_DOCK")) {
            // A panel along the top edge is where the menu bar would be.
            const bool atTop = a.y <= 2 && a.width > a.height;
            r.layer = atTop ? 25 : 20;
        } else if (t == atom("_NET_WM_WINDOW_TYPE_NOTIFICATION")) {
            r.layer = 23;
        } else if (t == atom("_NET_WM_WINDOW_TYPE_POPUP_MENU") ||
                   t == atom("_NET_WM_WINDOW_TYPE_DROPDOWN_MENU") ||
                   t == atom("_NET_WM_WINDOW_TYPE_COMBO") ||
                   t == atom("_NET_WM_WINDOW_TYPE_TOOLTIP") ||
                   t == atom("_NET_WM_WINDOW_TYPE_DND") || (a.override_redirect && t == 0)) {
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
        r.bounds = WindowBounds{0.0, 0.0, double(rootAttrs.width), double(rootAttrs.height)};
        list.append(r);
    }
    return list;
}

} // namespace MirlPlayer
