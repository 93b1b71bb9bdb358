// The sample side of AudioEQ: everything here runs on `sampleQueue`.
#include "audio/AudioEQ.h"
#include "audio/WideLoop.h"

#include "core/Environment.h"
#include "visualizers/VizConfig.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>

namespace MirlPlayer {

namespace {

const QString smoothingKey = QStringLiteral("smoothing");
const QString sensitivityKey = QStringLiteral("sensitivity");

// log2 of a positive, finite float, written so that loops over arrays of them vectorise (the
// library's log2f is a call per element). The mantissa is brought into [sqrt(1/2), sqrt(2)) and
// log2 of it comes from the series of atanh: with t = (m - 1) / (m + 1) at most 0.172, five terms
// leave an error far below a float's resolution.
inline float log2Positive(float x) {
    auto bits = std::bit_cast<std::uint32_t>(x);
    int exponent = int((bits >> 23) & 0xff) - 127;
    bits = (bits & 0x007fffffu) | 0x3f800000u; // mantissa in [1, 2)
    auto m = std::bit_cast<float>(bits);
    if (m > 1.41421356f) {
        m *= 0.5f;
        exponent += 1;
    }
    const float t = (m - 1.0f) / (m + 1.0f);
    const float t2 = t * t;
    const float series =
        t *
        (2.0f + t2 * (2.0f / 3.0f + t2 * (2.0f / 5.0f + t2 * (2.0f / 7.0f + t2 * (2.0f / 9.0f)))));
    constexpr float log2e = 1.4426950408889634f;
    return float(exponent) + series * log2e;
}

// 20 x log10(x) for a normal, positive x; callers add a small floor so that x is never zero.
inline float decibels(float x) {
    constexpr float dbPerOctave = 6.0205999132796239f; // 20 x log10(2)
    return dbPerOctave * log2Positive(x);
}

// Appends a block to a rolling buffer that keeps the latest `capacity` samples.
template <std::size_t capacity>
void appendRolling(std::array<float, capacity>& buf, int& count, const float* samples,
                   std::size_t n) {
    if (n >= capacity) {
        std::memcpy(buf.data(), samples + (n - capacity), capacity * sizeof(float));
        count = int(capacity);
    } else if (std::size_t(count) + n <= capacity) {
        if (n > 0)
            std::memcpy(buf.data() + count, samples, n * sizeof(float));
        count += int(n);
    } else {
        const std::size_t keep = capacity - n;
        std::memmove(buf.data(), buf.data() + (std::size_t(count) - keep), keep * sizeof(float));
        std::memcpy(buf.data() + keep, samples, n * sizeof(float));
        count = int(capacity);
    }
}

// A follower that decays towards zero for long enough walks into subnormal floats, where every
// operation costs a hundred times more. Far below anything visible, the value is zero.
inline float flushTiny(float v) {
    return v < 1e-20f ? 0.0f : v;
}

// Truncates a bin position to an integer, kept within 0...limit so that an absurd sample rate
// cannot overflow the conversion.
int truncatedBin(double position, int limit) {
    if (!(position > 0))
        return 0;
    return position >= limit ? limit : int(position);
}

MIRL_WIDE_LOOP void deinterleaveStereo(const float* s, float* l, float* r, std::size_t frames) {
    for (std::size_t i = 0; i < frames; ++i) {
        l[i] = s[2 * i];
        r[i] = s[2 * i + 1];
    }
}

// Scales both channels into l and r (which may be the inputs themselves) and mixes them to mono.
MIRL_WIDE_LOOP void scaleAndMix(const float* left, const float* right, float gain, float* l,
                                float* r, float* mono, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i) {
        const float a = left[i] * gain;
        const float b = right[i] * gain;
        l[i] = a;
        r[i] = b;
        mono[i] = (a + b) * 0.5f;
    }
}

MIRL_WIDE_LOOP void mixMono(const float* left, const float* right, float* mono, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i)
        mono[i] = (left[i] + right[i]) * 0.5f;
}

MIRL_WIDE_LOOP bool anyAbove(const float* x, std::size_t n, float threshold) {
    int count = 0; // a count, not an early exit, so that the loop vectorises
    for (std::size_t i = 0; i < n; ++i)
        count += std::fabs(x[i]) > threshold ? 1 : 0;
    return count > 0;
}

// Sum and pan column of every bin between first and last.
MIRL_WIDE_LOOP void panColumns(const float* magL, const float* magR, int first, int last,
                               float* sums, int* columns, int columnCount) {
    for (int k = first; k <= last; ++k) {
        const float s = magL[k] + magR[k];
        const float pan = s > 0.0f ? (magR[k] - magL[k]) / s : 0.0f;
        // (pan + 1) / 2 x (columns - 1) is never negative, so adding a half and truncating
        // rounds halves away from zero.
        const float x = (pan + 1.0f) * 0.5f * float(columnCount - 1) + 0.5f;
        sums[k] = s;
        columns[k] = std::clamp(int(x), 0, columnCount - 1);
    }
}

void ensureSize(std::vector<float>& v, std::size_t n) {
    if (v.size() < n)
        v.resize(n);
}

} // namespace

// ---- blocks ---------------------------------------------------------------------------------

void AudioEQ::processBlock(const float* samples, std::size_t frames, const TapFormat& format) {
    if (!m_tapASBD || *m_tapASBD != format)
        m_tapASBD = format;
    const std::size_t channels = format.channelsPerFrame;
    if (format.nonInterleaved) {
        const AudioBuffer planes[2] = {
            {samples, frames * sizeof(float)},
            {channels >= 2 && samples ? samples + frames : nullptr, frames * sizeof(float)}};
        processBlock(std::span<const AudioBuffer>(planes, channels >= 2 ? 2 : 1));
    } else {
        const AudioBuffer buffer{samples, frames * channels * sizeof(float)};
        processBlock(std::span<const AudioBuffer>(&buffer, 1));
    }
}

void AudioEQ::processBlock(std::span<const AudioBuffer> buffers) {
    if (!m_tapASBD || m_tapASBD->channelsPerFrame == 0)
        return;
    const TapFormat format = *m_tapASBD;
    if (buffers.empty() || !buffers[0].data)
        return;

    const float* left = nullptr;
    const float* right = nullptr;
    std::size_t leftCount = 0;
    std::size_t rightCount = 0;
    if (format.nonInterleaved) {
        left = buffers[0].data;
        leftCount = buffers[0].byteSize / sizeof(float);
        if (buffers.size() >= 2 && buffers[1].data) {
            right = buffers[1].data;
            rightCount = buffers[1].byteSize / sizeof(float);
        } else {
            right = left;
            rightCount = leftCount;
        }
    } else {
        const std::size_t n = buffers[0].byteSize / sizeof(float);
        const std::size_t channels = format.channelsPerFrame;
        if (channels <= n) {
            const std::size_t frames = n / channels;
            ensureSize(m_left, frames);
            ensureSize(m_right, frames);
            const float* s = buffers[0].data;
            float* l = m_left.data();
            float* r = m_right.data();
            if (channels == 2) {
                deinterleaveStereo(s, l, r, frames);
            } else {
                const std::size_t rightOffset = channels >= 2 ? 1 : 0;
                for (std::size_t i = 0; i < frames; ++i) {
                    l[i] = s[i * channels];
                    r[i] = s[i * channels + rightOffset];
                }
            }
            left = m_left.data();
            right = m_right.data();
            leftCount = rightCount = frames;
        }
    }
    if (leftCount != rightCount)
        return;
    const std::size_t n = leftCount;

    const float gain = m_loudness.gain(left, n, right, n, format.sampleRate,
                                       m_matchLoudness.load(std::memory_order_relaxed));
    ensureSize(m_mono, n);
    if (gain != 1.0f) {
        // Scale private copies: the delivered buffers belong to the backend.
        ensureSize(m_left, n);
        ensureSize(m_right, n);
        scaleAndMix(left, right, gain, m_left.data(), m_right.data(), m_mono.data(), n);
        left = m_left.data();
        right = m_right.data();
    } else {
        mixMono(left, right, m_mono.data(), n);
    }

    processMono(m_mono.data(), n);
    processStereo(left, right, n);
}

// ---- mono levels ----------------------------------------------------------------------------

void AudioEQ::processMono(const float* samples, std::size_t count) {
    appendRolling(m_buf, m_bufCount, samples, count);
    if (m_bufCount != fftSize)
        return;
    // Every block analyses the latest full frame, whatever its size: the overlap follows the
    // device's block size, and dt is measured, not counted in samples.
    const double now = m_clock.now();
    const double dt = std::clamp(now - m_lastProcess, 0.001, 0.1);
    m_lastProcess = now;
    analyze(m_buf.data(), dt);
}

void AudioEQ::analyze(const float* frame, double dt) {
    const EQTuning& t = tuning();
    const double rate = sampleRate();
    if (m_bandMap.sampleRate != rate || m_bandMap.bins != fftSize / 2)
        m_bandMap = BandMap::build(fftSize / 2, bandCount, rate, t.tilt);
    // The bands end at 16 kHz; the bins above it are never read.
    m_analyzer.magnitudes(frame, m_magnitudes.data(), m_bandMap.b1.back() + 1);
    m_bandMap.apply(m_magnitudes.data(), t, m_dbScratch.data(), m_target.data());

    // Rise emphasis: a band that jumps is pushed further, so that beats read as beats.
    if (t.punch > 0 && m_hasPrevTarget) {
        const float punch = float(t.punch);
        for (int i = 0; i < bandCount; ++i) {
            const float rise = m_target[i] - m_prevTarget[i];
            m_shaped[i] = rise > 0 ? std::min(1.0f, m_target[i] + rise * punch) : m_target[i];
        }
    } else {
        m_shaped = m_target;
    }
    m_prevTarget = m_target;
    m_hasPrevTarget = true;

    const double s = m_vizConfig.value(smoothingKey) * 2.8 + 0.4;
    const double attackTau = std::max(t.attack * s, 0.005);
    const double releaseTau = std::max(t.release * s, 0.02);
    const float rise = float(1.0 - std::exp(-dt / attackTau));
    const float fall = float(1.0 - std::exp(-dt / releaseTau));
    for (int i = 0; i < bandCount; ++i) {
        const float k = m_smoothed[i] < m_shaped[i] ? rise : fall;
        m_smoothed[i] = flushTiny(m_smoothed[i] + (m_shaped[i] - m_smoothed[i]) * k);
    }

    // Only delivery is limited: the follower above advances on every frame. The levels are the
    // follower scaled by the sensitivity, and only a delivery needs them.
    const double now = m_clock.now();
    if (!(now - m_lastEmit > emitInterval))
        return;
    m_lastEmit = now;

    const double sensitivity = m_vizConfig.value(sensitivityKey);
    for (int i = 0; i < bandCount; ++i) {
        const double v = double(m_smoothed[i]) * sensitivity;
        m_levels[i] = v <= 0 ? 0.0 : (v > 1 ? 1.0 : v);
    }

    if (debugEnabled()) {
        ++m_debugFrames;
        if (m_debugFrames % 30 == 0) {
            double sum = 0;
            double peak = 0;
            for (double v : m_levels) {
                sum += v;
                peak = std::max(peak, v);
            }
            std::fprintf(stderr, "EQ mean=%.3f peak=%.3f\n", sum / bandCount, peak);
        }
    }

    const bool hasSignal = anyAbove(frame, fftSize, 1e-6f);

    LevelsFrame& out = m_levelsOut.back();
    out.generation = m_captureGeneration;
    out.hasSignal = hasSignal;
    out.levels = m_levels;
    m_levelsOut.publish();
}

AudioEQ::BandMap AudioEQ::BandMap::build(int bins, int bands, double sampleRate, double tilt) {
    BandMap map;
    map.sampleRate = sampleRate;
    map.bins = bins;
    map.b0.resize(std::size_t(bands));
    map.b1.resize(std::size_t(bands));
    map.tiltDb.resize(std::size_t(bands));
    const double nyquist = sampleRate * 0.5;
    const double lowest = std::min(nyquist * 0.25, 40.0);
    const double highest = std::min(nyquist, 16000.0);
    const double ratio = highest / lowest;
    for (int i = 0; i < bands; ++i) {
        const double f0 = lowest * std::pow(ratio, double(i) / bands);
        const double f1 = lowest * std::pow(ratio, double(i + 1) / bands);
        const int b0 = std::max(truncatedBin(f0 / nyquist * bins, bins), 1);
        const int b1 = std::min(std::max(b0, truncatedBin(f1 / nyquist * bins, bins)), bins - 1);
        map.b0[std::size_t(i)] = b0;
        map.b1[std::size_t(i)] = b1;
        // The band's geometric centre sets the tilt, pivoting at 1 kHz.
        map.tiltDb[std::size_t(i)] = float(tilt * std::log2(std::sqrt(f0 * f1) / 1000.0));
    }
    return map;
}

void AudioEQ::BandMap::apply(const float* magnitudes, const EQTuning& t, float* db,
                             float* out) const {
    const int bands = int(b0.size());
    for (int i = 0; i < bands; ++i) {
        float peak = 0;
        for (int k = b0[std::size_t(i)]; k <= b1[std::size_t(i)]; ++k)
            peak = std::max(peak, magnitudes[k]);
        db[i] = peak;
    }
    for (int i = 0; i < bands; ++i)
        db[i] = decibels(db[i] + 1e-9f) + tiltDb[std::size_t(i)];
    if (t.sharpness > 0) {
        // An unsharp mask across bands; the means come from the untouched values.
        float means[bandCount];
        std::vector<float> heapMeans;
        float* mean = means;
        if (bands > bandCount) {
            heapMeans.resize(std::size_t(bands));
            mean = heapMeans.data();
        }
        for (int i = 0; i < bands; ++i) {
            const int lo = std::max(i - 3, 0);
            const int hi = std::min(i + 3, bands - 1);
            float sum = 0;
            for (int j = lo; j <= hi; ++j)
                sum += db[j];
            mean[i] = sum / float(hi - lo + 1);
        }
        const float sharpness = float(t.sharpness);
        for (int i = 0; i < bands; ++i)
            db[i] += sharpness * (db[i] - mean[i]);
    }
    const float floorDb = float(t.dbFloor);
    const float span = 0.0f - floorDb;
    const float gain = float(t.gain);
    const float contrast = float(t.contrast);
    for (int i = 0; i < bands; ++i) {
        const float x = std::clamp((db[i] - floorDb) / span, 0.0f, 1.0f);
        const float shaped = contrast == 2.0f ? x * x : std::pow(x, contrast);
        out[i] = std::min(1.0f, gain * shaped);
    }
}

std::vector<float> AudioEQ::bandLevels(const float* magnitudes, int bins, int bands,
                                       double sampleRate, const EQTuning& tuning) {
    if (bands <= 0 || bins < 2)
        return {};
    const BandMap map = BandMap::build(bins, bands, sampleRate, tuning.tilt);
    std::vector<float> db(static_cast<std::size_t>(bands));
    std::vector<float> out(static_cast<std::size_t>(bands));
    map.apply(magnitudes, tuning, db.data(), out.data());
    return out;
}

// ---- stereo field ---------------------------------------------------------------------------

void AudioEQ::processStereo(const float* left, const float* right, std::size_t count) {
    appendRolling(m_bufL, m_bufLCount, left, count);
    appendRolling(m_bufR, m_bufRCount, right, count);
    if (m_bufLCount != fftSize || m_bufRCount != fftSize)
        return;
    // The limit sits before the transforms: two of them are the costliest step here.
    const double now = m_clock.now();
    if (!(now - m_lastStereoAt > stereoInterval))
        return;
    m_lastStereoAt = now;
    analyzeStereo(now);
}

void AudioEQ::analyzeStereo(double now) {
    const int n = fftSize / 2;
    const double nyquist = sampleRate() * 0.5;
    const int first = std::max(truncatedBin(40.0 / nyquist * n, n), 1);
    const int last = std::min(n - 1, truncatedBin(16000.0 / nyquist * n, n));
    m_stereoL.magnitudes(m_bufL.data(), m_magL.data(), last + 1);
    m_stereoR.magnitudes(m_bufR.data(), m_magR.data(), last + 1);

    std::array<float, stereoCols> cols{};
    if (first < last) {
        // Sums and columns first, in a loop that vectorises; then each column keeps its peak.
        float* sums = m_stereoSum.data();
        int* columns = m_stereoColumn.data();
        panColumns(m_magL.data(), m_magR.data(), first, last, sums, columns, stereoCols);
        // Each column keeps its peak, not the sum. Neighbouring bins mostly land in the same
        // column; four partial maxima keep them from waiting on each other.
        std::array<std::array<float, stereoCols>, 4> lanes{};
        for (int k = first; k <= last; ++k) {
            const float s = sums[k];
            if (!(s >= 1e-7f))
                continue; // too quiet to place
            float& peak = lanes[std::size_t(k & 3)][std::size_t(columns[k])];
            peak = std::max(peak, s);
        }
        for (int c = 0; c < stereoCols; ++c)
            cols[c] =
                std::max(std::max(lanes[0][c], lanes[1][c]), std::max(lanes[2][c], lanes[3][c]));
    }

    constexpr float kernel[5] = {0.12f, 0.22f, 0.32f, 0.22f, 0.12f};
    std::array<float, stereoCols> spread{};
    for (int c = 0; c < stereoCols; ++c) {
        float sum = 0;
        for (int j = -2; j <= 2; ++j)
            sum += kernel[j + 2] * cols[std::clamp(c + j, 0, stereoCols - 1)];
        spread[c] = sum;
    }

    const double dt = std::clamp(now - m_lastStereoTime, 0.005, 0.1);
    m_lastStereoTime = now;
    const float s = float(m_vizConfig.value(smoothingKey) * 2.8 + 0.4);
    const float a = std::exp(float(dt) / (s * -0.02f));
    const float r = std::exp(float(dt) / (s * -0.09f));
    std::array<float, stereoCols> window{};
    for (int c = 0; c < stereoCols; ++c) {
        // A window of 70 dB below full scale.
        window[c] = std::clamp((decibels(spread[c] + 1e-6f) + 70.0f) / 70.0f, 0.0f, 1.0f);
    }
    for (int c = 0; c < stereoCols; ++c) {
        const float x = window[c];
        const float k = m_smoothedStereo[c] < x ? a : r;
        m_smoothedStereo[c] =
            flushTiny(m_smoothedStereo[c] + (x - m_smoothedStereo[c]) * (1.0f - k));
    }

    if (debugEnabled()) {
        ++m_stereoDebugFrames;
        if (m_stereoDebugFrames % 30 == 0) {
            float lo = 1;
            float hi = 0;
            float sum = 0;
            int buckets[5] = {0, 0, 0, 0, 0};
            for (float v : m_smoothedStereo) {
                lo = std::min(lo, v);
                hi = std::max(hi, v);
                sum += v;
                ++buckets[std::min(int(v * 5.0f), 4)];
            }
            std::fprintf(stderr,
                         "STEREO min=%.2f mean=%.2f max=%.2f  buckets[<.2 .2 .4 .6 >.8]=%d %d %d "
                         "%d %d\n",
                         lo, sum / stereoCols, hi, buckets[0], buckets[1], buckets[2], buckets[3],
                         buckets[4]);
        }
    }

    StereoFrame& out = m_stereoOut.back();
    out.generation = m_captureGeneration;
    out.curve = m_smoothedStereo;
    m_stereoOut.publish();
}

// ---- capture epochs -------------------------------------------------------------------------

void AudioEQ::captureReset() {
    m_captureGeneration = QUuid::createUuid();
    m_loudness.reset();
    m_tapASBD.reset();
    m_bufCount = 0;
    m_bufLCount = 0;
    m_bufRCount = 0;
    m_hasPrevTarget = false;
    m_smoothed.fill(0.0f);
    m_smoothedStereo.fill(0.0f);
}

} // namespace MirlPlayer
