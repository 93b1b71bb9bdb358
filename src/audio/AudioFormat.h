#pragma once

#include <QtGlobal>
#include <cstddef>

namespace MirlPlayer {

// The format of the captured stream, as the capture backend declares it when a tap starts.
struct TapFormat {
    double sampleRate = 48000.0;
    bool isFloat = true; // blocks are 32-bit floats; the backend refuses anything else
    quint32 channelsPerFrame = 2;
    bool nonInterleaved = false; // one buffer per channel instead of frames of samples

    bool operator==(const TapFormat&) const = default;
};

// One buffer of a delivered block: `byteSize` bytes of 32-bit float samples. A non-interleaved
// block has one buffer per channel; an interleaved one has a single buffer of frames.
struct AudioBuffer {
    const float* data = nullptr;
    std::size_t byteSize = 0;
};

} // namespace MirlPlayer
