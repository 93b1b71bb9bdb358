#pragma once

#include <QByteArray>
#include <QHash>
#include <cstdlib>
#include <memory>
#include <optional>
#include <vector>

struct xcb_connection_t;
struct xcb_get_property_reply_t;

namespace MirlPlayer::X11 {

// The process's one connection to the X server: Qt's own when Qt runs on xcb, else (a Wayland
// session reading XWayland, or a program without an X platform) one opened on first use and
// kept for the life of the process. Null where there is no X server at all. GUI thread.
xcb_connection_t* connection();
// The root window of the connection's default screen; 0 without a connection.
quint32 rootWindow();
// Whether the connection is Qt's own, whose events reach Qt's native event filters.
bool sharedWithQt();

// An interned atom, looked up once per process; 0 without a connection.
quint32 atom(const char* name);

struct FreeReply {
    void operator()(void* p) const { std::free(p); }
};
// An xcb reply, freed with its owner.
template <typename T> using Reply = std::unique_ptr<T, FreeReply>;
using PropertyReply = Reply<xcb_get_property_reply_t>;

// Asks for a window property; the answer is read with `reply`. Both directions of a round trip
// stay separate so that many questions can travel in one.
unsigned askProperty(quint32 window, quint32 property, quint32 type, quint32 length = 256);
PropertyReply reply(unsigned cookie);

// The 32-bit values of a property reply of the given type, or nothing when the property is
// missing, of another type or the window has gone.
std::optional<std::vector<quint32>> values32(const xcb_get_property_reply_t* r, quint32 type);
std::optional<quint32> first32(const xcb_get_property_reply_t* r, quint32 type);
// The class of a WM_CLASS reply ("instance\0class\0").
std::optional<QByteArray> wmClass(const xcb_get_property_reply_t* r);

} // namespace MirlPlayer::X11
