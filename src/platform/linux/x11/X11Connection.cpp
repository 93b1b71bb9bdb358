#include "platform/linux/x11/X11Connection.h"

#include <QGuiApplication>
#include <xcb/xcb.h>

namespace MirlPlayer::X11 {

namespace {

struct Disconnect {
    void operator()(xcb_connection_t* c) const { xcb_disconnect(c); }
};

struct State {
    xcb_connection_t* connection = nullptr;
    bool qts = false;
    quint32 root = 0;
    std::unique_ptr<xcb_connection_t, Disconnect> own;
    QHash<QByteArray, quint32> atoms;
};

xcb_connection_t* qtConnection() {
    auto* app = qGuiApp;
    if (!app)
        return nullptr;
    auto* x11 = app->nativeInterface<QNativeInterface::QX11Application>();
    return x11 ? x11->connection() : nullptr;
}

State& state() {
    static State s = [] {
        State s;
        int screen = 0;
        if ((s.connection = qtConnection())) {
            s.qts = true;
            // Qt talks to the default screen of $DISPLAY, as a connection of our own would.
            char* host = nullptr;
            int display = 0;
            if (!xcb_parse_display(nullptr, &host, &display, &screen))
                screen = 0;
            std::free(host);
        } else {
            xcb_connection_t* c = xcb_connect(nullptr, &screen);
            if (xcb_connection_has_error(c)) {
                xcb_disconnect(c);
                return s;
            }
            s.own.reset(c);
            s.connection = c;
        }
        auto it = xcb_setup_roots_iterator(xcb_get_setup(s.connection));
        for (int i = 0; i < screen && it.rem; ++i)
            xcb_screen_next(&it);
        if (it.rem)
            s.root = it.data->root;
        return s;
    }();
    return s;
}

} // namespace

xcb_connection_t* connection() {
    State& s = state();
    return s.connection && !xcb_connection_has_error(s.connection) ? s.connection : nullptr;
}

quint32 rootWindow() {
    return connection() ? state().root : 0;
}

bool sharedWithQt() {
    return state().qts;
}

quint32 atom(const char* name) {
    xcb_connection_t* c = connection();
    if (!c)
        return 0;
    State& s = state();
    const QByteArray key(name);
    auto it = s.atoms.constFind(key);
    if (it != s.atoms.constEnd())
        return *it;
    Reply<xcb_intern_atom_reply_t> r(xcb_intern_atom_reply(
        c, xcb_intern_atom(c, 0, uint16_t(key.size()), key.constData()), nullptr));
    const quint32 value = r ? r->atom : 0;
    if (value)
        s.atoms.insert(key, value);
    return value;
}

unsigned askProperty(quint32 window, quint32 property, quint32 type, quint32 length) {
    xcb_connection_t* c = connection();
    if (!c || !window || !property)
        return 0;
    return xcb_get_property(c, 0, window, property, type, 0, length).sequence;
}

PropertyReply reply(unsigned cookie) {
    xcb_connection_t* c = connection();
    if (!c || !cookie)
        return nullptr;
    // A window that vanished answers with an error, which is dropped here: no reply.
    return PropertyReply(xcb_get_property_reply(c, xcb_get_property_cookie_t{cookie}, nullptr));
}

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

std::optional<QByteArray> wmClass(const xcb_get_property_reply_t* r) {
    if (!r || r->type != XCB_ATOM_STRING || r->format != 8)
        return std::nullopt;
    const QByteArray raw(static_cast<const char*>(xcb_get_property_value(r)),
                         xcb_get_property_value_length(r));
    const QList<QByteArray> parts = raw.split('\0');
    if (parts.size() < 2 || parts[1].isEmpty())
        return std::nullopt;
    return parts[1];
}

} // namespace MirlPlayer::X11
