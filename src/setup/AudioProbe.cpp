#include "setup/AudioProbe.h"

#include <QPointer>
#include <algorithm>
#include <cmath>

namespace MirlPlayer {

namespace {
constexpr float meterGain = 1.6f;
constexpr float meterFall = 0.82f;
constexpr float heardThreshold = 0.002f;
} // namespace

AudioProbe::AudioProbe(std::unique_ptr<CaptureBackend> backend, PlayerProcess player,
                       QObject* parent)
    : QObject(parent)
    , m_backend(std::move(backend))
    , m_player(std::move(player)) {
    m_meterTimer.setInterval(meterIntervalMs);
    connect(&m_meterTimer, &QTimer::timeout, this, &AudioProbe::meterTick);
    m_lookTimer.setInterval(lookIntervalMs);
    connect(&m_lookTimer, &QTimer::timeout, this, &AudioProbe::look);

    // The handlers run on the backend's thread; stop() tears the capture down before this
    // object goes, and no handler runs after that.
    m_backend->setBlockHandler([this](const CaptureBlock& block) {
        const float peak =
            blockPeak(block.samples, std::size_t(block.frames) * block.format.channels);
        float old = m_peak.load(std::memory_order_relaxed);
        while (peak > old && !m_peak.compare_exchange_weak(old, peak, std::memory_order_relaxed)) {
        }
    });
    m_backend->setEndedHandler([this](quint64 captureID) {
        onMain(this, [this, captureID] {
            if (captureID != m_captureID)
                return;
            // The player's output went away (it stopped, or rebuilt its stream): look again.
            m_backend->teardown();
            m_object = 0;
            m_captureID = 0;
            look();
        });
    });
    m_backend->setChangedHandler([this] { onMain(this, [this] { look(); }); });
}

AudioProbe::~AudioProbe() {
    stop();
}

SerialQueue& AudioProbe::queue() {
    static SerialQueue* queue = new SerialQueue(QStringLiteral("com.kestrova.mirlpro.setup-probe"));
    return *queue;
}

float AudioProbe::blockPeak(const float* samples, std::size_t count) {
    float peak = 0;
    const std::size_t whole = count - count % 4;
    for (std::size_t i = 0; i < whole; i += 4) {
        const float a = std::max(std::fabs(samples[i]), std::fabs(samples[i + 1]));
        const float b = std::max(std::fabs(samples[i + 2]), std::fabs(samples[i + 3]));
        peak = std::max(peak, std::max(a, b));
    }
    return peak;
}

void AudioProbe::start() {
    if (m_running)
        return;
    setFailed(false);
    m_backend->setWanted(true);
    // A capture left from an earlier start goes first.
    m_backend->removeStale();
    if (!m_backend->reachable()) {
        fail();
        return;
    }
    m_peak.store(0);
    setRunning(true);
    m_meterTimer.start();
    m_lookTimer.start();
    look();
}

void AudioProbe::stop() {
    m_meterTimer.stop();
    m_lookTimer.stop();
    ++m_generation;
    m_looking = false;
    m_backend->teardown();
    m_backend->setWanted(false);
    m_object = 0;
    m_captureID = 0;
    setRunning(false);
    setLevel(0);
}

void AudioProbe::fail() {
    stop();
    setFailed(true);
}

void AudioProbe::look() {
    if (!m_running || m_looking)
        return;
    m_looking = true;
    const int generation = m_generation;
    // Asking the players which one plays may wait for them: on the probe's queue.
    queue().async([self = QPointer(this), generation, player = m_player, ids = m_candidates] {
        std::optional<qint64> pid = player ? player(ids) : std::nullopt;
        onMain([self, generation, pid] {
            if (!self || generation != self->m_generation)
                return;
            self->m_looking = false;
            self->capture(pid);
        });
    });
}

void AudioProbe::capture(std::optional<qint64> pid) {
    const quint64 object = pid ? m_backend->audioObject(*pid) : 0;
    if (object == m_object)
        return;
    m_backend->teardown();
    m_object = 0;
    m_captureID = 0;
    if (object == 0)
        return; // no output yet: the player has not played since it started
    const CaptureBackend::StartResult result = m_backend->startCapture(object);
    if (const auto* started = std::get_if<CaptureBackend::Started>(&result);
        started && started->format.usable()) {
        m_object = object;
        m_captureID = started->captureID;
        return;
    }
    fail();
}

void AudioProbe::meterTick() {
    const float p = m_peak.exchange(0);
    setLevel(std::max(std::min(p * meterGain, 1.0f), m_level * meterFall));
    if (p > heardThreshold && !m_heard) {
        m_heard = true;
        Q_EMIT heardChanged();
    }
}

void AudioProbe::setRunning(bool running) {
    if (running != m_running) {
        m_running = running;
        Q_EMIT runningChanged();
    }
}

void AudioProbe::setFailed(bool failed) {
    if (failed != m_failed) {
        m_failed = failed;
        Q_EMIT failedChanged();
    }
}

void AudioProbe::setLevel(float level) {
    if (level != m_level) {
        m_level = level;
        Q_EMIT levelChanged();
    }
}

} // namespace MirlPlayer
