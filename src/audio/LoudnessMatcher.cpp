#include "audio/LoudnessMatcher.h"

#include <algorithm>
#include <cmath>

namespace MirlPlayer {

namespace {

// The sums of the squares of x[0] ... x[n - 1], those at even and those at odd positions apart:
// for interleaved stereo, the left and the right channel. Sixty-four independent partial sums, so
// that the loop vectorises and its additions, four or eight vectors of them, do not wait on each
// other; folded in single precision, a block at a time, no sum grows long enough to lose
// precision. With an even number of lanes, the even ones only ever see even positions.
void squareSums(const float* x, std::size_t n, double& even, double& odd) {
    constexpr std::size_t lanes = 64;
    constexpr std::size_t folds = 16;
    float partial[lanes] = {};
    std::size_t i = 0;
    for (; i + lanes <= n; i += lanes) {
        for (std::size_t j = 0; j < lanes; ++j)
            partial[j] += x[i + j] * x[i + j];
    }
    float folded[folds];
    for (std::size_t j = 0; j < folds; ++j)
        folded[j] = (partial[j] + partial[j + 16]) + (partial[j + 32] + partial[j + 48]);
    double sums[2] = {0.0, 0.0};
    for (; i < n; ++i)
        sums[i & 1] += double(x[i]) * double(x[i]);
    for (std::size_t j = 0; j < folds; ++j)
        sums[j & 1] += double(folded[j]);
    even = sums[0];
    odd = sums[1];
}

double meanSquare(const float* x, std::size_t n) {
    if (n == 0)
        return 0.0;
    double even = 0.0;
    double odd = 0.0;
    squareSums(x, n, even, odd);
    return (even + odd) / double(n);
}

} // namespace

float LoudnessMatcher::gain(const float* left, std::size_t leftCount, const float* right,
                            std::size_t rightCount, double sampleRate, bool enabled) {
    if (leftCount == 0)
        return 1.0f;
    if (!enabled)
        return 1.0f;
    const float m = float((meanSquare(left, leftCount) + meanSquare(right, rightCount)) * 0.5);
    return gainFor(m, leftCount, sampleRate);
}

float LoudnessMatcher::gainInterleaved(const float* samples, std::size_t frames, double sampleRate,
                                       bool enabled) {
    if (frames == 0)
        return 1.0f;
    if (!enabled)
        return 1.0f;
    double left = 0.0;
    double right = 0.0;
    squareSums(samples, frames * 2, left, right);
    return gainFor(float((left / double(frames) + right / double(frames)) * 0.5), frames,
                   sampleRate);
}

float LoudnessMatcher::gainFor(float m, std::size_t frames, double sampleRate) {
    float level = energy;
    // In single precision, so that a block at exactly -50 dB lands on the gate and stays out.
    if (10.0f * std::log10(m + 1e-12f) > -50.0f) {
        const double dt = double(frames) / std::max(sampleRate, 1.0);
        if (energy != 0.0f) {
            const double tau = heard < 2.0 ? 0.5 : 1.5;
            energy += float((m - energy) * (1.0 - std::exp(-dt / tau)));
        } else {
            energy = m;
        }
        heard += dt;
        level = energy;
    }
    if (!(level > 0.0f))
        return 1.0f;
    const double db = std::clamp(-10.0 * std::log10(double(level)) - 6.0, 0.0, 18.0);
    return float(std::pow(10.0, db / 20.0));
}

void LoudnessMatcher::reset() {
    energy = 0.0f;
    heard = 0.0;
}

} // namespace MirlPlayer
