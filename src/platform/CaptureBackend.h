#pragma once

#include <QString>
#include <QtGlobal>
#include <functional>
#include <variant>

namespace MirlPlayer {

// The format of delivered sample blocks, the record the analysis reads: float samples of
// `bitsPerChannel` bits, `channels` channels, interleaved or one plane per channel.
struct CaptureFormat {
    double sampleRate = 0;
    quint32 channels = 0;
    quint32 bitsPerChannel = 0;
    bool isFloat = false;
    bool interleaved = true;

    // Only 32-bit float at a positive rate is analysed; anything else is refused at start.
    bool usable() const {
        return isFloat && bitsPerChannel == 32 && sampleRate > 0 && channels > 0;
    }
    bool operator==(const CaptureFormat&) const = default;
};

// One block of samples as the audio system hands it over: `samples` holds frames * channels
// floats, interleaved, and is valid only during the call that passes it. Whoever keeps samples
// copies them.
struct CaptureBlock {
    CaptureFormat format;
    quint32 frames = 0;
    const float* samples = nullptr;
};

// The seam to the operating system's per-application audio capture. Everything except the
// handlers is called on the GUI thread, in the order of the tap start: removeStale, audioObject,
// startCapture; teardown removes whatever exists and may be called at any time, also twice.
// After teardown() returns, no block handler runs and none will. None of the calls waits for
// the audio system: what they need to know, the backend learns on its own thread beforehand.
class CaptureBackend {
public:
    // A start that failed: the step that failed and the system's status code.
    struct Failure {
        QString step;
        int code = 0;
        bool operator==(const Failure&) const = default;
    };
    // A capture that runs. `captureID` names it in a later endedHandler call.
    struct Started {
        CaptureFormat format;
        quint64 captureID = 0;
    };
    using StartResult = std::variant<Started, Failure>;

    using BlockHandler = std::function<void(const CaptureBlock& block)>;
    using EndedHandler = std::function<void(quint64 captureID)>;
    using ChangedHandler = std::function<void()>;

    virtual ~CaptureBackend() = default;

    // Removes a capture object that this program left behind in the audio system, if any.
    virtual void removeStale() = 0;

    // The audio object that plays the sound of process `pid`, or 0 when the process has none
    // (not running, or not playing through the audio system yet). Never fails.
    virtual quint64 audioObject(qint64 pid) = 0;

    // Captures `object` alone: the process stays audible, and the capture never falls back to
    // another source. Blocks go to the block handler on the backend's real-time thread.
    virtual StartResult startCapture(quint64 object) = 0;

    // Stops and removes the capture and everything created for it. Ignores every error.
    virtual void teardown() = 0;

    // Whether captures are wanted for now. While they are, the backend may stay connected to the
    // audio system and follow it, so that audioObject() answers at once; once they are not, it
    // lets go of everything.
    virtual void setWanted(bool wanted) { (void)wanted; }

    // Whether the audio system can be reached at all; false when no sound server runs.
    virtual bool reachable() { return true; }

    // Called on the backend's real-time thread with each block of a running capture: the handler
    // must neither block nor allocate, or the audio system's whole graph waits for it.
    void setBlockHandler(BlockHandler handler) { m_blockHandler = std::move(handler); }
    // Called on the backend's thread, at most once per capture, when a capture ended by itself
    // because the captured object went away. The capture delivers nothing more afterwards.
    void setEndedHandler(EndedHandler handler) { m_endedHandler = std::move(handler); }
    // Called on the backend's thread when audioObject() may answer differently than before: a
    // new output appeared, or the backend's view of the audio system became complete.
    void setChangedHandler(ChangedHandler handler) { m_changedHandler = std::move(handler); }

protected:
    void deliverBlock(const CaptureBlock& block) const {
        if (m_blockHandler)
            m_blockHandler(block);
    }
    void deliverEnded(quint64 captureID) const {
        if (m_endedHandler)
            m_endedHandler(captureID);
    }
    void deliverChanged() const {
        if (m_changedHandler)
            m_changedHandler();
    }

private:
    BlockHandler m_blockHandler;
    EndedHandler m_endedHandler;
    ChangedHandler m_changedHandler;
};

} // namespace MirlPlayer
