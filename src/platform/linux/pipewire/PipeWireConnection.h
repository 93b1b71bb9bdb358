#pragma once

#include "platform/linux/pipewire/PipeWireGraph.h"
#include "platform/linux/pipewire/PipeWireHandles.h"

#include <functional>
#include <map>
#include <optional>
#include <vector>

namespace MirlPlayer {

// One connection to the sound server on a thread loop of its own, and the audio graph as its
// registry tells it, kept current on that loop: clients (bound for their info, which carries the
// application's pids and sandbox) and nodes. Opening and reading never wait for the server: the
// connection is a local socket, and the listing arrives on the loop thread. The events are
// called there, under the loop's lock; the owner's objects on this connection (a stream) must be
// gone before close().
class PipeWireConnection {
public:
    // The names the client and its streams carry: what the desktop shows for a capture (GNOME
    // and KDE count every recording stream as a use of the microphone, and KDE names the client
    // in its tooltip).
    static constexpr const char* appName = "MIRL PRO";
    static constexpr const char* appID = "com.kestrova.mirlpro";

    struct Events {
        std::function<void()> changed;           // the graph became complete, or gained an
                                                 // output stream or a client's info
        std::function<void(quint32 id)> removed; // an object left the graph
        std::function<void()> lost;              // the server went away
    };

    explicit PipeWireConnection(Events events);
    ~PipeWireConnection();
    PipeWireConnection(const PipeWireConnection&) = delete;
    PipeWireConnection& operator=(const PipeWireConnection&) = delete;

    // Connects, or keeps a working connection; a lost one is replaced. False without a server.
    bool open();
    void close();
    bool isOpen() const { return m_loop != nullptr; }

    // A copy of the graph, or nothing while its first listing is incomplete.
    std::optional<std::vector<PipeWireObject>> objects();

    pw_thread_loop* loop() const { return m_loop.get(); }
    pw_core* core() const { return m_core.get(); }

private:
    struct Entry {
        PipeWireObject object;
        PipeWire::ClientPtr client;
        PipeWire::Listener listener;
        PipeWireConnection* owner = nullptr;
    };

    static const pw_core_events coreEvents;
    static const pw_registry_events registryEvents;
    static const pw_client_events clientEvents;

    Events m_events;
    // Declared so that destruction in reverse order frees the graph before the registry and
    // the core before context and loop.
    PipeWire::ThreadLoopPtr m_loop;
    PipeWire::ContextPtr m_context;
    PipeWire::CorePtr m_core;
    PipeWire::Listener m_coreListener;
    PipeWire::RegistryPtr m_registry;
    PipeWire::Listener m_registryListener;
    std::map<quint32, std::unique_ptr<Entry>> m_graph;
    // Loop thread (read elsewhere only under the loop lock):
    bool m_broken = false; // the server went away
    bool m_listed = false; // the first listing of globals arrived
    bool m_synced = false; // ... and the info of the clients bound while listing
    int m_syncSeq = 0;
};

} // namespace MirlPlayer
