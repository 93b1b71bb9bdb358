#include "platform/linux/pipewire/PipeWireConnection.h"

#include <QLoggingCategory>

#include <cerrno>

Q_DECLARE_LOGGING_CATEGORY(lcPipeWire)

namespace MirlPlayer {

using namespace PipeWire;

const pw_core_events PipeWireConnection::coreEvents = [] {
    pw_core_events events{};
    events.version = PW_VERSION_CORE_EVENTS;
    events.done = [](void* data, uint32_t id, int seq) {
        auto* self = static_cast<PipeWireConnection*>(data);
        if (id != PW_ID_CORE || seq != self->m_syncSeq)
            return;
        // The first answer ends the listing of globals; the second the info of the clients
        // bound during it. From then on the graph is complete and kept so.
        if (!self->m_listed) {
            self->m_listed = true;
            self->m_syncSeq = pw_core_sync(self->m_core.get(), PW_ID_CORE, self->m_syncSeq);
            return;
        }
        if (!self->m_synced) {
            self->m_synced = true;
            self->m_events.changed();
        }
    };
    events.error = [](void* data, uint32_t id, int seq, int res, const char* message) {
        auto* self = static_cast<PipeWireConnection*>(data);
        qCDebug(lcPipeWire) << "server error on" << id << res << message;
        if (id == PW_ID_CORE && res == -EPIPE) {
            self->m_broken = true;
            self->m_synced = false;
            self->m_events.lost();
        }
    };
    return events;
}();

const pw_client_events PipeWireConnection::clientEvents = [] {
    pw_client_events events{};
    events.version = PW_VERSION_CLIENT_EVENTS;
    events.info = [](void* data, const pw_client_info* info) {
        auto* entry = static_cast<Entry*>(data);
        if (!info || !info->props)
            return;
        // The info carries the application's own pid and sandbox next to the checked pid, and a
        // bridge fills it in after the client appeared.
        const auto props = toHash(info->props);
        for (auto it = props.begin(); it != props.end(); ++it)
            entry->object.props.insert(it.key(), it.value());
        if (entry->owner->m_synced)
            entry->owner->m_events.changed();
    };
    return events;
}();

const pw_registry_events PipeWireConnection::registryEvents = [] {
    pw_registry_events events{};
    events.version = PW_VERSION_REGISTRY_EVENTS;
    events.global = [](void* data, uint32_t id, uint32_t permissions, const char* type,
                       uint32_t version, const spa_dict* props) {
        auto* self = static_cast<PipeWireConnection*>(data);
        if (!type)
            return;
        const bool isClient = std::strcmp(type, PW_TYPE_INTERFACE_Client) == 0;
        const bool isNode = std::strcmp(type, PW_TYPE_INTERFACE_Node) == 0;
        if (!isClient && !isNode)
            return;
        auto entry = std::make_unique<Entry>();
        entry->object = {id, QString::fromUtf8(type), toHash(props)};
        entry->owner = self;
        if (isClient) {
            entry->client.reset(static_cast<pw_client*>(
                pw_registry_bind(self->m_registry.get(), id, type, PW_VERSION_CLIENT, 0)));
            if (entry->client)
                pw_client_add_listener(entry->client.get(), entry->listener.get(), &clientEvents,
                                       entry.get());
        }
        const bool output = isNode && entry->object.props.value(QStringLiteral("media.class")) ==
                                          u"Stream/Output/Audio";
        self->m_graph[id] = std::move(entry);
        if (output && self->m_synced)
            self->m_events.changed();
    };
    events.global_remove = [](void* data, uint32_t id) {
        auto* self = static_cast<PipeWireConnection*>(data);
        self->m_events.removed(id);
        self->m_graph.erase(id);
    };
    return events;
}();

PipeWireConnection::PipeWireConnection(Events events)
    : m_events(std::move(events)) {}

PipeWireConnection::~PipeWireConnection() {
    close();
}

bool PipeWireConnection::open() {
    if (m_loop) {
        bool usable = false;
        {
            LoopLock lock(m_loop.get());
            usable = m_core && !m_broken;
        }
        if (usable)
            return true;
        close(); // a server that went away; a new one may be there
    }
    initPipeWire();
    m_loop.reset(pw_thread_loop_new("mirl-capture", nullptr));
    if (!m_loop)
        return false;
    m_context.reset(pw_context_new(pw_thread_loop_get_loop(m_loop.get()), nullptr, 0));
    if (!m_context || pw_thread_loop_start(m_loop.get()) < 0)
        return false;
    LoopLock lock(m_loop.get());
    m_broken = m_listed = m_synced = false;
    m_core.reset(pw_context_connect(
        m_context.get(), pw_properties_new(PW_KEY_APP_NAME, appName, PW_KEY_APP_ID, appID, nullptr),
        0));
    if (!m_core) {
        qCDebug(lcPipeWire) << "no sound server:" << strerror(errno);
        return false;
    }
    pw_core_add_listener(m_core.get(), m_coreListener.get(), &coreEvents, this);
    m_registry.reset(pw_core_get_registry(m_core.get(), PW_VERSION_REGISTRY, 0));
    if (!m_registry)
        return false;
    pw_registry_add_listener(m_registry.get(), m_registryListener.get(), &registryEvents, this);
    m_syncSeq = pw_core_sync(m_core.get(), PW_ID_CORE, 0);
    return true;
}

void PipeWireConnection::close() {
    if (m_loop) {
        LoopLock lock(m_loop.get());
        m_graph.clear();
        m_registryListener.remove();
        m_registry.reset();
        m_coreListener.remove();
        m_core.reset();
    }
    // The loop thread must be stopped without the lock held, and before its context goes.
    if (m_loop)
        pw_thread_loop_stop(m_loop.get());
    m_context.reset();
    m_loop.reset();
    m_broken = m_listed = m_synced = false;
}

std::optional<std::vector<PipeWireObject>> PipeWireConnection::objects() {
    if (!m_loop)
        return std::nullopt;
    LoopLock lock(m_loop.get());
    if (!m_synced)
        return std::nullopt;
    std::vector<PipeWireObject> objects;
    objects.reserve(m_graph.size());
    for (const auto& [id, entry] : m_graph)
        objects.push_back(entry->object);
    return objects;
}

} // namespace MirlPlayer
