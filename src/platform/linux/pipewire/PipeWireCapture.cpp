#include "platform/linux/pipewire/PipeWireCapture.h"

#include "platform/linux/pipewire/PipeWireConnection.h"
#include "platform/linux/pipewire/SystemProcessFacts.h"

#include <QLoggingCategory>
#include <QMap>

#include <spa/param/audio/format-utils.h>
#include <spa/param/props.h>
#include <spa/pod/builder.h>

#include <atomic>
#include <cerrno>

Q_LOGGING_CATEGORY(lcPipeWire, "mirl.audio.pipewire")

namespace MirlPlayer {

using namespace PipeWire;

namespace {

constexpr quint32 kRate = 48000;
constexpr quint32 kChannels = 2;
// Sound settings list the stream by this name: what it is for, and what it hears.
constexpr const char* kMediaName = "Visualizer (the player's sound only)";

} // namespace

struct PipeWireCapture::Impl {
    explicit Impl(PipeWireCapture* capture)
        : owner(capture)
        , connection({[this] { owner->deliverChanged(); },
                      [this](quint32 id) {
                          // When the target leaves the graph the capture ends, whatever the
                          // session manager does with the stream.
                          if (targetNode != 0 && id == targetNode)
                              endCapture("target node removed");
                      },
                      [this] { endCapture("server gone"); }}) {}

    PipeWireCapture* owner;
    SystemProcessFacts facts;
    bool wanted = false;                 // GUI thread
    QMap<quint64, quint32> nodeBySerial; // GUI thread: serials of the last lookups → node ids
    PipeWireConnection connection;

    // The running capture, on the connection; declared after it, so it goes first.
    StreamPtr stream;
    Listener streamListener;
    quint32 targetNode = 0;
    quint64 captureID = 0;
    quint64 captureCounter = 0;
    // Read by the process callback on the real-time data thread, written on the loop thread.
    std::atomic<bool> ended{false};
    // The negotiated format of the running stream, packed so that it is read in one go: the rate
    // in the low 32 bits, the channel count above; 0 while there is no usable format.
    std::atomic<quint64> format{0};
    bool reachedStream = false; // loop thread: the stream has been connected at least once

    void dropStream(); // the loop lock is held
    void stopStream();
    void disconnect();
    void endCapture(const char* why);

    static const pw_stream_events streamEvents;
};

void PipeWireCapture::Impl::dropStream() {
    // Disconnecting takes the node off the real-time data thread and waits until it is off; only
    // then may the listener that thread calls go away.
    if (stream)
        pw_stream_disconnect(stream.get());
    streamListener.remove();
    stream.reset();
}

void PipeWireCapture::Impl::stopStream() {
    if (!connection.isOpen())
        return;
    LoopLock lock(connection.loop());
    dropStream();
    targetNode = 0;
    captureID = 0;
}

void PipeWireCapture::Impl::disconnect() {
    stopStream();
    connection.close();
    nodeBySerial.clear();
}

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
        self->format = 0;
        if (spa_format_parse(param, &mediaType, &mediaSubtype) < 0 ||
            mediaType != SPA_MEDIA_TYPE_audio || mediaSubtype != SPA_MEDIA_SUBTYPE_raw ||
            spa_format_audio_raw_parse(param, &info) < 0)
            return;
        if (info.format == SPA_AUDIO_FORMAT_F32 && info.channels > 0 && info.rate > 0)
            self->format = quint64(info.rate) | quint64(info.channels) << 32;
    };
    // Runs on PipeWire's real-time data thread (the stream is made with RT_PROCESS), so that a
    // block costs no hop through the loop thread: it reads the buffer in place and hands it on.
    events.process = [](void* data) {
        auto* self = static_cast<Impl*>(data);
        pw_buffer* buffer = pw_stream_dequeue_buffer(self->stream.get());
        if (!buffer)
            return;
        const spa_buffer* spaBuffer = buffer->buffer;
        const quint64 packed = self->format.load(std::memory_order_acquire);
        const quint32 channels = quint32(packed >> 32);
        if (!self->ended.load(std::memory_order_acquire) && channels > 0 && spaBuffer &&
            spaBuffer->n_datas > 0) {
            const spa_data& plane = spaBuffer->datas[0];
            if (plane.data && plane.chunk) {
                const quint32 offset = std::min(plane.chunk->offset, plane.maxsize);
                const quint32 size = std::min(plane.chunk->size, plane.maxsize - offset);
                const quint32 frames = size / (channels * quint32(sizeof(float)));
                if (frames > 0) {
                    CaptureBlock block;
                    block.format = {double(quint32(packed)), channels, 32, true, true};
                    block.frames = frames;
                    block.samples = reinterpret_cast<const float*>(
                        static_cast<const char*>(plane.data) + offset);
                    self->owner->deliverBlock(block);
                }
            }
        }
        pw_stream_queue_buffer(self->stream.get(), buffer);
    };
    return events;
}();

// --- PipeWireCapture ----------------------------------------------------------------------

PipeWireCapture::PipeWireCapture()
    : d(std::make_unique<Impl>(this)) {}

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
    if (!d->connection.open()) {
        d->disconnect();
        return 0;
    }
    // What the loop thread learnt so far; until its first listing is complete nothing is known,
    // and the changed handler says when it is.
    const auto objects = d->connection.objects();
    const std::optional<ProcessStream> found =
        objects ? findProcessStream(*objects, pid, &d->facts) : std::nullopt;
    if (!found)
        return 0;
    d->nodeBySerial.insert(found->serial, found->nodeID);
    return found->serial;
}

CaptureBackend::StartResult PipeWireCapture::startCapture(quint64 object) {
    if (object == 0)
        return Failure{QStringLiteral("FindStream"), -ENOENT};
    if (!d->connection.open()) {
        d->connection.close();
        return Failure{QStringLiteral("ConnectServer"), -errno};
    }
    LoopLock lock(d->connection.loop());
    d->dropStream();
    d->ended = false;
    d->reachedStream = false;
    d->format = 0;
    d->targetNode = d->nodeBySerial.value(object, 0);

    const QByteArray serial = QByteArray::number(object);
    PropertiesPtr props(pw_properties_new(
        PW_KEY_MEDIA_TYPE, "Audio", PW_KEY_MEDIA_CATEGORY, "Capture", PW_KEY_MEDIA_NAME, kMediaName,
        PW_KEY_APP_NAME, PipeWireConnection::appName, PW_KEY_APP_ID, PipeWireConnection::appID,
        PW_KEY_NODE_NAME, "mirl-pro-capture", PW_KEY_NODE_DESCRIPTION, "MIRL PRO Audio",
        PW_KEY_TARGET_OBJECT, serial.constData(), PW_KEY_NODE_DONT_RECONNECT, "true", nullptr));
    // pw_stream_new takes ownership of the properties, also when it fails.
    d->stream.reset(pw_stream_new(d->connection.core(), kMediaName, props.release()));
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

    const int status =
        pw_stream_connect(d->stream.get(), PW_DIRECTION_INPUT, PW_ID_ANY,
                          pw_stream_flags(PW_STREAM_FLAG_AUTOCONNECT | PW_STREAM_FLAG_MAP_BUFFERS |
                                          PW_STREAM_FLAG_RT_PROCESS),
                          params, 1);
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
    if (!wanted || !d->connection.open())
        d->disconnect();
}

bool PipeWireCapture::reachable() {
    return d->connection.open();
}

bool PipeWireCapture::hasStream() const {
    return d->stream != nullptr;
}

} // namespace MirlPlayer
