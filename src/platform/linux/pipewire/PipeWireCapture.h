#pragma once

#include "platform/CaptureBackend.h"

#include <memory>

namespace MirlPlayer {

// Captures one application's sound through PipeWire. The application's output stream node is
// found from its pid (client → node → object.serial, see findProcessStream for sandboxed and
// multi-process players), and a capture stream is linked to that node alone: `target.object`
// names it by serial and `node.dont-reconnect` keeps the session manager from moving the stream
// to another source (the default sink's monitor, a microphone) when the node goes away. The
// application stays audible; its node simply gains one more link.
//
// PipeWire runs on a thread loop of its own with one connection, which exists while captures
// are wanted: on it the registry's objects are followed as they come and go, so a lookup on the
// GUI thread reads what is already known and never waits for the server. With nothing wanted
// the process holds no connection to the sound server at all. Blocks are copied out of the
// stream's process callback on the loop thread and handed to the block handler as F32
// interleaved stereo at 48 kHz.
class PipeWireCapture final : public CaptureBackend {
public:
    PipeWireCapture();
    ~PipeWireCapture() override;
    PipeWireCapture(const PipeWireCapture&) = delete;
    PipeWireCapture& operator=(const PipeWireCapture&) = delete;

    void removeStale() override;
    quint64 audioObject(qint64 pid) override;
    StartResult startCapture(quint64 object) override;
    void teardown() override;
    void setWanted(bool wanted) override;
    bool reachable() override;

    // Whether a capture stream exists right now (for checks that nothing is left running).
    bool hasStream() const;

    // The format every capture asks for.
    static CaptureFormat requestedFormat();

private:
    struct Impl;
    std::unique_ptr<Impl> d;
};

} // namespace MirlPlayer
