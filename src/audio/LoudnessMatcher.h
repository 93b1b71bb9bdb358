#pragma once

#include <cstddef>

namespace MirlPlayer {

// Follows the long-term energy of the captured audio and returns the gain that brings it to a
// mean square of -6 dB, for the analysis only: the listener's volume is never touched. It only
// boosts (up to 18 dB), it learns only from audio above -50 dB, and the first two seconds it
// hears adapt three times as fast as the rest.
struct LoudnessMatcher {
    float energy = 0.0f; // smoothed mean square of the loud-enough audio; 0 = nothing heard yet
    double heard = 0.0;  // seconds of audio that passed the gate since the last reset

    // Called once per block. With matching off, it returns 1 and learns nothing.
    float gain(const float* left, std::size_t leftCount, const float* right, std::size_t rightCount,
               double sampleRate, bool enabled);
    // The same for a block of interleaved stereo: `frames` pairs of left and right samples.
    float gainInterleaved(const float* samples, std::size_t frames, double sampleRate,
                          bool enabled);
    void reset();

private:
    // From the block's mean square (over both channels) and its length to the gain.
    float gainFor(float meanSquare, std::size_t frames, double sampleRate);
};

} // namespace MirlPlayer
