// The capture half of AudioEQ: the supervisor that keeps one capture of the player's own
// output running while it is wanted, its status texts, failure memory and teardown.
#include "audio/AudioEQ.h"

#include "core/Environment.h"
#include "platform/SleepWatch.h"

#include <QPointer>
#include <atomic>
#include <cstdio>
#include <memory>

namespace MirlPlayer {

namespace {

TapFormat tapFormatOf(const CaptureFormat& format) {
    TapFormat tap;
    tap.sampleRate = format.sampleRate;
    tap.isFloat = format.isFloat;
    tap.channelsPerFrame = format.channels;
    tap.nonInterleaved = !format.interleaved;
    return tap;
}

const QString failureText = QStringLiteral(
    "Couldn’t start audio capture. Check audio permission, then choose Check Again.");
const QString silenceText = QStringLiteral(
    "No audio detected. Play a song, check audio permission, then choose Check Again.");

} // namespace

void AudioEQ::debugLine(const QString& message) {
    if (debugEnabled())
        std::fprintf(stderr, "AudioEQ: %s\n", message.toUtf8().constData());
}

QString AudioEQ::labelFor(Source source) const {
    if (source != Source::music)
        return QStringLiteral("Spotify");
    // The music part is whichever player plays it; its own name reads better than a generic one.
    if (m_playerLookup.displayName) {
        const QString name = m_playerLookup.displayName(Source::music);
        if (!name.trimmed().isEmpty() && name != sourceRawValue(Source::music))
            return name;
    }
    return QStringLiteral("your music player");
}

void AudioEQ::drainBlocks() {
    m_blocks.drain([this](const BlockRing::Slot& slot) {
        processBlock(slot.samples.data(), slot.frames, tapFormatOf(slot.format));
    });
}

void AudioEQ::setCaptureBackend(CaptureBackend* backend) {
    if (m_backend == backend)
        return;
    if (m_backend) {
        teardown();
        m_backend->setBlockHandler(nullptr);
        m_backend->setEndedHandler(nullptr);
        m_backend->setChangedHandler(nullptr);
        m_backend->setWanted(false);
    }
    m_backend = backend;
    if (!m_backend)
        return;
    // Blocks arrive on the backend's real-time thread and are analysed in order on the sample
    // queue. Levels are due at most every `emitInterval`, so the queue is woken once that much
    // audio has arrived, not for every block; a shown stereo view wants each block at once.
    m_backend->setBlockHandler([this](const CaptureBlock& block) {
        const double wakeSeconds =
            m_stereoWanted.load(std::memory_order_relaxed) ? 0.0 : emitInterval;
        if (m_blocks.push(block, std::size_t(block.format.sampleRate * wakeSeconds)))
            m_blocksIn->wake();
    });
    QPointer<AudioEQ> self(this);
    m_backend->setEndedHandler([self](quint64 captureID) {
        onMain(self.data(), [self, captureID] {
            if (self)
                self->captureEnded(captureID);
        });
    });
    // An output that appears while the supervisor waits for one is taken at once, not at the
    // next tick; a burst of changes makes one look.
    auto pending = std::make_shared<std::atomic<bool>>(false);
    m_backend->setChangedHandler([self, pending] {
        if (pending->exchange(true))
            return;
        onMain(self.data(), [self, pending] {
            pending->store(false);
            if (self && self->m_wantCapture && self->m_tappedPID == -1)
                self->refresh();
        });
    });
}

void AudioEQ::start() {
    if (m_started)
        return;
    m_started = true;
    if (m_sleepWatch) {
        QPointer<AudioEQ> self(this);
        m_sleepWatch->observe([self] {
            if (self)
                self->handleWake();
        });
    }
    refresh();
}

void AudioEQ::stop() {
    m_wantCapture = false;
    m_ensureTimer.stop();
    m_stopGrace.stop();
    m_wakeRefresh.stop();
    if (m_sleepWatch && m_started)
        m_sleepWatch->stopObserving();
    m_started = false;
    teardown();
    if (m_backend)
        m_backend->setWanted(false);
}

void AudioEQ::setSource(const QString& name) {
    const Source source = name == u"Music" ? Source::music : Source::spotify;
    if (source == m_source)
        return;
    m_source = source;
    m_sourceLabel = labelFor(source);
    m_failedPID.reset();
    teardown();
}

void AudioEQ::setCapture(bool want, bool stopNow) {
    m_stopGrace.stop();
    if (want) {
        m_wantCapture = true;
        refresh();
    } else if (stopNow) {
        m_wantCapture = false;
        refresh();
    } else if (m_wantCapture) {
        m_stopGrace.start(stopGraceInterval, false);
    }
}

void AudioEQ::handleWake() {
    teardown();
    m_wakeRefresh.start(wakeDelay, false);
}

void AudioEQ::retry() {
    m_failedPID.reset();
    teardown();
    refresh();
}

void AudioEQ::pollTimers() {
    m_stopGrace.poll();
    m_wakeRefresh.poll();
    m_ensureTimer.poll();
}

void AudioEQ::refresh() {
    // The backend follows the audio system only while there is something to capture.
    if (m_backend)
        m_backend->setWanted(m_wantCapture);
    if (!m_wantCapture) {
        if (m_tappedPID != -1)
            teardown();
        reportStatus(QStringLiteral("Play a song to check audio capture."), false);
        updateSupervisor();
        return;
    }
    updateSupervisor();
    const std::optional<qint64> pid =
        m_playerLookup.pid ? m_playerLookup.pid(m_source) : std::nullopt;
    if (!pid || *pid <= 0) {
        if (m_tappedPID != -1)
            teardown();
        m_failedPID.reset();
        reportStatus(QStringLiteral("Open ") + m_sourceLabel + QStringLiteral(" and play a song."),
                     false);
        return;
    }
    if (*pid != m_tappedPID) {
        if (m_failedPID == *pid)
            return; // the earlier error stands until the player restarts or the user retries
        teardown();
        startTap(*pid);
        return;
    }
    const double now = m_clock.now();
    if (now - m_startedAt > watchdogInterval && now - m_lastSignalAt > watchdogInterval)
        reportStatus(silenceText, true);
}

// The supervisor ticks only while there is something to supervise: nothing runs while capture
// is not wanted.
void AudioEQ::updateSupervisor() {
    const bool needed = m_started && (m_wantCapture || m_tappedPID != -1);
    if (needed && !m_ensureTimer.isActive())
        m_ensureTimer.start(supervisorInterval, true);
    else if (!needed && m_ensureTimer.isActive())
        m_ensureTimer.stop();
}

void AudioEQ::startTap(qint64 pid) {
    if (m_source == Source::music)
        m_sourceLabel = labelFor(Source::music); // a new process may be another player
    if (m_backend)
        m_backend->removeStale();
    const quint64 object = m_backend ? m_backend->audioObject(pid) : 0;
    if (object == 0) {
        // Not a failure: the player has not opened its output yet. The next tick comes back.
        reportStatus(QStringLiteral("Waiting for ") + m_sourceLabel +
                         QStringLiteral(" to play audio…"),
                     false);
        return;
    }
    reportStatus(QStringLiteral("Connecting to ") + m_sourceLabel + QStringLiteral("…"), false);

    const CaptureBackend::StartResult result = m_backend->startCapture(object);
    if (const auto* failure = std::get_if<CaptureBackend::Failure>(&result)) {
        fail(pid, failure->step, failure->code);
        return;
    }
    const auto& started = std::get<CaptureBackend::Started>(result);
    m_captureID = started.captureID;
    m_capturedObject = object;
    if (!started.format.usable()) {
        fail(pid, QStringLiteral("Unsupported audio format"), 0);
        return;
    }
    const TapFormat format = tapFormatOf(started.format);
    m_sampleQueue.sync([this, format] { setTapFormat(format); });

    m_tappedPID = pid;
    m_failedPID.reset();
    m_startedAt = m_clock.now();
    updateSupervisor();
    reportStatus(QStringLiteral("Waiting for audio from ") + m_sourceLabel + QStringLiteral("…"),
                 false);
    debugLine(m_sourceLabel + QStringLiteral(" tap started (pid ") + QString::number(pid) +
              QStringLiteral(")"));
}

void AudioEQ::fail(qint64 pid, const QString& what, int code) {
    debugLine(what + QStringLiteral(" failed ") + QString::number(code));
    teardown();
    m_failedPID = pid;
    reportStatus(failureText, true);
}

void AudioEQ::teardown() {
    if (m_backend)
        m_backend->teardown();
    m_captureID = 0;
    m_tappedPID = -1;
    // Runs between blocks: after it, nothing of the old capture is analysed or delivered.
    m_sampleQueue.sync([this] { captureReset(); });
    m_lastSignalAt = Clock::distantPast;
    if (onStereo)
        onStereo(StereoCurve{});
}

// The captured stream went away under a running capture (the player closed or rebuilt its
// output): the capture is torn down and looked for again at once instead of waiting for the
// watchdog, since the same pid would otherwise look tapped forever. A capture that ends right
// after its start while the same output is still there was refused (a link the sound server or
// a sandbox does not allow); rebuilding it would only end again, in a loop, so it fails like any
// other start and waits for a new pid or a retry.
void AudioEQ::captureEnded(quint64 captureID) {
    if (captureID == 0 || captureID != m_captureID)
        return; // a capture that was already replaced
    const qint64 pid = m_tappedPID;
    const quint64 object = m_capturedObject;
    const bool quick = m_clock.now() - m_startedAt < quickEndInterval;
    debugLine(m_sourceLabel + QStringLiteral(" capture ended"));
    teardown();
    if (quick && m_backend && m_backend->audioObject(pid) == object) {
        fail(pid, QStringLiteral("CaptureEnded"), 0);
        return;
    }
    refresh();
}

} // namespace MirlPlayer
