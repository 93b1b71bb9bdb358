#include "platform/linux/pipewire/PipeWireCapture.h"

#include "platform/linux/pipewire/PipeWireGraph.h"
#include "platform/linux/pipewire/SystemProcessFacts.h"

#include <QLoggingCategory>
#include <QMap>

#include <pipewire/pipewire.h>
#include <spa/param/audio/format-utils.h>
#include <spa/param/props.h>
#include <spa/pod/builder.h>

#include <atomic>
#include <cerrno>
#include <cstring>
#include <map>
#include <mutex>

Q_LOGGING_CATEGORY(lcPipeWire, "mirl.audio.pipewire")

namespace MirlPlayer {

namespace {

constexpr quint32 kRate = 48000;
constexpr const char* kAppName = "MIRL PRO";
constexpr const char* kAppID = "com.kestrova.mirlpro";
// Sound settings list the stream by this name: what it is for, and what it hears.
constexpr const char* kMediaName = "Visualizer (the player's sound only)";
constexpr quint32 kChannels = 2;

void initPipeWire() {
    static std::once_flag once;
    std::call_once(once, [] { pw_init(nullptr, nullptr); });
}

// Owning handles. Each deleter is the one call that frees its C object.
struct ThreadLoopDeleter {
    void operator()(pw_thread_loop* loop) const { pw_thread_loop_destroy(loop); }
};
struct ContextDeleter {
    void operator()(pw_context* context) const { pw_context_destroy(context); }
};
struct CoreDeleter {
    void operator()(pw_core* core) const { pw_core_disconnect(core); }
};
struct ProxyDeleter {
    void operator()(void* proxy) const { pw_proxy_destroy(static_cast<pw_proxy*>(proxy)); }
};
struct StreamDeleter {
    void operator()(pw_stream* stream) const { pw_stream_destroy(stream); }
};
struct PropertiesDeleter {
    void operator()(pw_properties* props) const { pw_properties_free(props); }
};

using ThreadLoopPtr = std::unique_ptr<pw_thread_loop, ThreadLoopDeleter>;
using ContextPtr = std::unique_ptr<pw_context, ContextDeleter>;
using CorePtr = std::unique_ptr<pw_core, CoreDeleter>;
using RegistryPtr = std::unique_ptr<pw_registry, ProxyDeleter>;
using ClientPtr = std::unique_ptr<pw_client, ProxyDeleter>;
using StreamPtr = std::unique_ptr<pw_stream, StreamDeleter>;
using PropertiesPtr = std::unique_ptr<pw_properties, PropertiesDeleter>;

// A listener registration. It must be removed before the object it listens to is freed, so
// owners declare it after the handle: members are destroyed in reverse order.
class Listener {
public:
    Listener() { std::memset(&m_hook, 0, sizeof m_hook); }
    ~Listener() { remove(); }
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;
    spa_hook* get() { return &m_hook; }
    void remove() {
        if (m_hook.link.next) {
            spa_hook_remove(&m_hook);
            std::memset(&m_hook, 0, sizeof m_hook);
        }
    }

private:
    spa_hook m_hook;
};

// Holds the thread loop's lock for a scope. The loop thread takes the same lock while it runs
// callbacks, so while it is held no callback runs.
class LoopLock {
public:
    explicit LoopLock(pw_thread_loop* loop)
        : m_loop(loop) {
        pw_thread_loop_lock(m_loop);
    }
    ~LoopLock() { pw_thread_loop_unlock(m_loop); }
    LoopLock(const LoopLock&) = delete;
    LoopLock& operator=(const LoopLock&) = delete;

private:
    pw_thread_loop* m_loop;
};

QHash<QString, QString> toHash(const spa_dict* dict) {
    QHash<QString, QString> out;
    if (!dict)
        return out;
    const spa_dict_item* item;
    spa_dict_for_each(item, dict) {
        if (item->key && item->value)
            out.insert(QString::fromUtf8(item->key), QString::fromUtf8(item->value));
    }
    return out;
}

} // namespace

struct PipeWireCapture::Impl {
    PipeWireCapture* owner = nullptr;
    SystemProcessFacts facts;
    bool wanted = false; // GUI thread

    // The connection, alive while captures are wanted (or, for a caller that never says, from
    // the first need to teardown()). Declared so that destruction in reverse order frees the
    // stream before the graph, the graph before the registry and the core before context and
    // loop.
    ThreadLoopPtr loop;
    ContextPtr context;
    CorePtr core;
    Listener coreListener;
    RegistryPtr registry;
    Listener registryListener;
    // Loop thread (read elsewhere only under the loop lock):
    bool broken = false; // the server went away
    bool listed = false; // the first listing of globals arrived
    bool synced = false; // ... and the info of the clients bound while listing
    int syncSeq = 0;

    // The graph as the registry tells it, kept current on the loop thread. Clients are bound
    // for their info, which carries the pids and the sandbox of the application.
    struct Entry {
        PipeWireObject object;
        ClientPtr client;
        Listener listener;
        Impl* impl = nullptr;
    };
    std::map<quint32, std::unique_ptr<Entry>> graph;
    QMap<quint64, quint32> nodeBySerial; // GUI thread: serials of the last lookups → node ids

    // The running capture.
    StreamPtr stream;
    Listener streamListener;
    quint32 targetNode = 0;
    quint64 captureID = 0;
    quint64 captureCounter = 0;
    bool ended = false;         // loop thread
    CaptureFormat format;       // loop thread: negotiated format of the running stream
    bool reachedStream = false; // loop thread: the stream has been connected at least once

    bool connect();
    void disconnect();
    void stopStream();
    void endCapture(const char* why);

    static const pw_core_events coreEvents;
    static const pw_registry_events registryEvents;
    static const pw_client_events clientEvents;
    static const pw_stream_events streamEvents;
};

// --- connection ---------------------------------------------------------------------------

const pw_core_events PipeWireCapture::Impl::coreEvents = [] {
    pw_core_events events{};
    events.version = PW_VERSION_CORE_EVENTS;
    events.done = [](void* data, uint32_t id, int seq) {
        auto* self = static_cast<Impl*>(data);
        if (id != PW_ID_CORE || seq != self->syncSeq)
            return;
        // The first answer ends the listing of globals; the second the info of the clients
        // bound during it. From then on the graph is complete and kept so.
        if (!self->listed) {
            self->listed = true;
            self->syncSeq = pw_core_sync(self->core.get(), PW_ID_CORE, self->syncSeq);
            return;
        }
        if (!self->synced) {
            self->synced = true;
            self->owner->deliverChanged();
        }
    };
    events.error = [](void* data, uint32_t id, int seq, int res, const char* message) {
        auto* self = static_cast<Impl*>(data);
        qCDebug(lcPipeWire) << "server error on" << id << res << message;
        if (id == PW_ID_CORE && res == -EPIPE) {
            self->broken = true;
            self->synced = false;
            self->endCapture("server gone");
        }
    };
    return events;
}();

// Connects and starts following the graph. Nothing here waits for the server: the connection
// is a local socket, and the listing arrives on the loop thread.
bool PipeWireCapture::Impl::connect() {
    if (loop) {
        bool usable = false;
        {
            LoopLock lock(loop.get());
            usable = core && !broken;
        }
        if (usable)
            return true;
        disconnect(); // a server that went away; a new one may be there
    }
    initPipeWire();
    loop.reset(pw_thread_loop_new("mirl-capture", nullptr));
    if (!loop)
        return false;
    context.reset(pw_context_new(pw_thread_loop_get_loop(loop.get()), nullptr, 0));
    if (!context || pw_thread_loop_start(loop.get()) < 0)
        return false;
    LoopLock lock(loop.get());
    broken = listed = synced = false;
    // The client's names are what the desktop shows for the capture: GNOME and KDE count every
    // recording stream as a use of the microphone, and KDE names the client in its tooltip.
    core.reset(pw_context_connect(
        context.get(), pw_properties_new(PW_KEY_APP_NAME, kAppName, PW_KEY_APP_ID, kAppID, nullptr),
        0));
    if (!core) {
        qCDebug(lcPipeWire) << "no sound server:" << strerror(errno);
        return false;
    }
    pw_core_add_listener(core.get(), coreListener.get(), &coreEvents, this);
    registry.reset(pw_core_get_registry(core.get(), PW_VERSION_REGISTRY, 0));
    if (!registry)
        return false;
    pw_registry_add_listener(registry.get(), registryListener.get(), &registryEvents, this);
    syncSeq = pw_core_sync(core.get(), PW_ID_CORE, 0);
    return true;
}

void PipeWireCapture::Impl::disconnect() {
    if (loop) {
        LoopLock lock(loop.get());
        streamListener.remove();
        stream.reset();
        graph.clear();
        registryListener.remove();
        registry.reset();
        coreListener.remove();
        core.reset();
    }
    // The loop thread must be stopped without the lock held, and before its context goes.
    if (loop)
        pw_thread_loop_stop(loop.get());
    context.reset();
    loop.reset();
    broken = listed = synced = false;
    targetNode = 0;
    captureID = 0;
    nodeBySerial.clear();
}

void PipeWireCapture::Impl::stopStream() {
    if (!loop)
        return;
    LoopLock lock(loop.get());
    streamListener.remove();
    stream.reset();
    targetNode = 0;
    captureID = 0;
}

// --- the graph ----------------------------------------------------------------------------

const pw_client_events PipeWireCapture::Impl::clientEvents = [] {
    pw_client_events events{};
    events.version = PW_VERSION_CLIENT_EVENTS;
    events.info = [](void* data, const pw_client_info* info) {
        auto* entry = static_cast<Entry*>(data);
        if (!info || !info->props)
            return;
        // The client's info carries the application's own pid and sandbox next to the checked
        // pid, and a bridge fills it in after the client appeared.
        const auto props = toHash(info->props);
        for (auto it = props.begin(); it != props.end(); ++it)
            entry->object.props.insert(it.key(), it.value());
        if (entry->impl->synced)
            entry->impl->owner->deliverChanged();
    };
    return events;
}();

const pw_registry_events PipeWireCapture::Impl::registryEvents = [] {
    pw_registry_events events{};
    events.version = PW_VERSION_REGISTRY_EVENTS;
    events.global = [](void* data, uint32_t id, uint32_t permissions, const char* type,
                       uint32_t version, const spa_dict* props) {
        auto* self = static_cast<Impl*>(data);
        if (!type)
            return;
        const bool isClient = std::strcmp(type, PW_TYPE_INTERFACE_Client) == 0;
        const bool isNode = std::strcmp(type, PW_TYPE_INTERFACE_Node) == 0;
        if (!isClient && !isNode)
            return;
        auto entry = std::make_unique<Entry>();
        entry->object = {id, QString::fromUtf8(type), toHash(props)};
        entry->impl = self;
        if (isClient) {
            entry->client.reset(static_cast<pw_client*>(
                pw_registry_bind(self->registry.get(), id, type, PW_VERSION_CLIENT, 0)));
            if (entry->client)
                pw_client_add_listener(entry->client.get(), entry->listener.get(), &clientEvents,
                                       entry.get());
        }
        const bool output = isNode && entry->object.props.value(QStringLiteral("media.class")) ==
                                          u"Stream/Output/Audio";
        self->graph[id] = std::move(entry);
        if (output && self->synced)
            self->owner->deliverChanged();
    };
    events.global_remove = [](void* data, uint32_t id) {
        auto* self = static_cast<Impl*>(data);
        // When the target leaves the graph the capture ends, whatever the session manager
        // does with the stream.
        if (self->targetNode != 0 && id == self->targetNode)
            self->endCapture("target node removed");
        self->graph.erase(id);
    };
    return events;
}();

// --- the capture stream -------------------------------------------------------------------

void PipeWireCapture::Impl::endCapture(const char* why) {
    if (!stream || ended)
        return;
    ended = true;
    qCDebug(lcPipeWire) << "capture ended:" << why;
    // The process callback drops every buffer from now on; the owner tears the stream down.
    owner->deliverEnded(captureID);
}

const pw_stream_events PipeWireCapture::Impl::streamEvents = [] {
    pw_stream_events events{};
    events.version = PW_VERSION_STREAM_EVENTS;
    events.state_changed = [](void* data, pw_stream_state old, pw_stream_state state,
                              const char* error) {
        auto* self = static_cast<Impl*>(data);
        qCDebug(lcPipeWire) << "stream" << pw_stream_state_as_string(old) << "→"
                            << pw_stream_state_as_string(state) << (error ? error : "");
        if (state == PW_STREAM_STATE_PAUSED || state == PW_STREAM_STATE_STREAMING)
            self->reachedStream = true;
        // The session manager destroys a stream whose target went away rather than moving it.
        if (state == PW_STREAM_STATE_ERROR ||
            (state == PW_STREAM_STATE_UNCONNECTED && self->reachedStream))
            self->endCapture(error ? error : "stream unconnected");
    };
    events.param_changed = [](void* data, uint32_t id, const spa_pod* param) {
        auto* self = static_cast<Impl*>(data);
        if (id != SPA_PARAM_Format || !param)
            return;
        uint32_t mediaType = 0;
        uint32_t mediaSubtype = 0;
        spa_audio_info_raw info{};
        self->format = {};
        if (spa_format_parse(param, &mediaType, &mediaSubtype) < 0 ||
            mediaType != SPA_MEDIA_TYPE_audio || mediaSubtype != SPA_MEDIA_SUBTYPE_raw ||
            spa_format_audio_raw_parse(param, &info) < 0)
            return;
        if (info.format == SPA_AUDIO_FORMAT_F32 && info.channels > 0 && info.rate > 0)
            self->format = {double(info.rate), info.channels, 32, true, true};
    };
    events.process = [](void* data) {
        auto* self = static_cast<Impl*>(data);
        pw_buffer* buffer = pw_stream_dequeue_buffer(self->stream.get());
        if (!buffer)
            return;
        const spa_buffer* spaBuffer = buffer->buffer;
        if (!self->ended && self->format.usable() && spaBuffer && spaBuffer->n_datas > 0) {
            const spa_data& plane = spaBuffer->datas[0];
            if (plane.data && plane.chunk) {
                const quint32 offset = std::min(plane.chunk->offset, plane.maxsize);
                const quint32 size = std::min(plane.chunk->size, plane.maxsize - offset);
                const quint32 stride = self->format.channels * quint32(sizeof(float));
                const quint32 frames = size / stride;
                if (frames > 0) {
                    const auto* first = reinterpret_cast<const float*>(
                        static_cast<const char*>(plane.data) + offset);
                    CaptureBlock block;
                    block.format = self->format;
                    block.frames = frames;
                    block.samples.assign(first,
                                         first + std::size_t(frames) * self->format.channels);
                    self->owner->deliverBlock(std::move(block));
                }
            }
        }
        pw_stream_queue_buffer(self->stream.get(), buffer);
    };
    return events;
}();

// --- PipeWireCapture ----------------------------------------------------------------------

PipeWireCapture::PipeWireCapture()
    : d(std::make_unique<Impl>()) {
    d->owner = this;
}

PipeWireCapture::~PipeWireCapture() {
    d->disconnect();
}

CaptureFormat PipeWireCapture::requestedFormat() {
    return {double(kRate), kChannels, 32, true, true};
}

void PipeWireCapture::removeStale() {
    // A capture stream belongs to this process's connection and dies with it, so the only stale
    // one there can be is one this object still holds.
    d->stopStream();
}

quint64 PipeWireCapture::audioObject(qint64 pid) {
    if (pid <= 0)
        return 0;
    if (!d->connect()) {
        d->disconnect();
        return 0;
    }
    // A copy of what the loop thread learnt; until its first listing is complete nothing is
    // known, and the changed handler says when it is.
    std::vector<PipeWireObject> objects;
    {
        LoopLock lock(d->loop.get());
        if (!d->synced)
            return 0;
        objects.reserve(d->graph.size());
        for (const auto& [id, entry] : d->graph)
            objects.push_back(entry->object);
    }
    const std::optional<ProcessStream> found = findProcessStream(objects, pid, &d->facts);
    if (!found)
        return 0;
    d->nodeBySerial.insert(found->serial, found->nodeID);
    return found->serial;
}

CaptureBackend::StartResult PipeWireCapture::startCapture(quint64 object) {
    if (object == 0)
        return Failure{QStringLiteral("FindStream"), -ENOENT};
    if (!d->connect()) {
        d->disconnect();
        return Failure{QStringLiteral("ConnectServer"), -errno};
    }
    LoopLock lock(d->loop.get());
    d->streamListener.remove();
    d->stream.reset();
    d->ended = false;
    d->reachedStream = false;
    d->format = {};
    d->targetNode = d->nodeBySerial.value(object, 0);

    const QByteArray serial = QByteArray::number(object);
    PropertiesPtr props(pw_properties_new(
        PW_KEY_MEDIA_TYPE, "Audio", PW_KEY_MEDIA_CATEGORY, "Capture", PW_KEY_MEDIA_NAME, kMediaName,
        PW_KEY_APP_NAME, kAppName, PW_KEY_APP_ID, kAppID, PW_KEY_NODE_NAME, "mirl-pro-capture",
        PW_KEY_NODE_DESCRIPTION, "MIRL PRO Audio", PW_KEY_TARGET_OBJECT, serial.constData(),
        PW_KEY_NODE_DONT_RECONNECT, "true", nullptr));
    // pw_stream_new takes ownership of the properties, also when it fails.
    d->stream.reset(pw_stream_new(d->core.get(), kMediaName, props.release()));
    if (!d->stream)
        return Failure{QStringLiteral("CreateStream"), -errno};
    pw_stream_add_listener(d->stream.get(), d->streamListener.get(), &Impl::streamEvents, d.get());

    std::uint8_t podBuffer[1024];
    spa_pod_builder builder = SPA_POD_BUILDER_INIT(podBuffer, sizeof podBuffer);
    spa_audio_info_raw info{};
    info.format = SPA_AUDIO_FORMAT_F32;
    info.rate = kRate;
    info.channels = kChannels;
    info.position[0] = SPA_AUDIO_CHANNEL_FL;
    info.position[1] = SPA_AUDIO_CHANNEL_FR;
    const spa_pod* params[1] = {spa_format_audio_raw_build(&builder, SPA_PARAM_EnumFormat, &info)};
    if (!params[0])
        return Failure{QStringLiteral("Unsupported audio format"), 0};

    const int status = pw_stream_connect(
        d->stream.get(), PW_DIRECTION_INPUT, PW_ID_ANY,
        pw_stream_flags(PW_STREAM_FLAG_AUTOCONNECT | PW_STREAM_FLAG_MAP_BUFFERS), params, 1);
    if (status < 0) {
        d->streamListener.remove();
        d->stream.reset();
        return Failure{QStringLiteral("ConnectStream"), status};
    }
    d->captureID = ++d->captureCounter;
    return Started{requestedFormat(), d->captureID};
}

void PipeWireCapture::teardown() {
    d->stopStream();
    // While captures are wanted the connection stays, so the next lookup needs no new one.
    if (!d->wanted)
        d->disconnect();
}

void PipeWireCapture::setWanted(bool wanted) {
    d->wanted = wanted;
    if (!wanted)
        d->disconnect();
    else if (!d->connect())
        d->disconnect();
}

bool PipeWireCapture::hasStream() const {
    return d->stream != nullptr;
}

} // namespace MirlPlayer
