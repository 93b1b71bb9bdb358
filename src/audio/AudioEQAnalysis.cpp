// The sample side of AudioEQ: everything here runs on `sampleQueue`.
#include "audio/AudioEQ.h"

#include "core/Environment.h"
#include "visualizers/VizConfig.h"

#include <QScopeGuard>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>

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

// Both channels scaled by the loudness gain, and their mix to mono, in one pass.
template <std::size_t stride>
void spreadInto(const float* left, const float* right, float gain, float* mono, float* l, float* r,
                std::size_t n) {
    for (std::size_t i = 0; i < n; ++i) {
        const float a = left[i * stride] * gain;
        const float b = right[i * stride] * gain;
        mono[i] = (a + b) * 0.5f;
        l[i] = a;
        r[i] = b;
    }
}

// Samples of one channel scaled by the loudness gain, from a block whose frames are `stride`
// floats apart.
template <std::size_t stride>
void scaledInto(const float* x, float gain, float* out, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i)
        out[i] = x[i * stride] * gain;
}

// Both channels scaled by the loudness gain and mixed to mono.
template <std::size_t stride>
void mixedInto(const float* left, const float* right, float gain, float* out, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i)
        out[i] = (left[i * stride] * gain + right[i * stride] * gain) * 0.5f;
}

bool anyAbove(const float* x, std::size_t n, float threshold) {
    int count = 0; // a count, not an early exit, so that the loop vectorises
    for (std::size_t i = 0; i < n; ++i)
        count += std::fabs(x[i]) > threshold ? 1 : 0;
    return count > 0;
}

// One step of an attack/release follower over n values: each moves towards its target by the
// `rise` share when below it, by the `fall` share otherwise.
void follow(float* __restrict value, const float* __restrict target, float rise, float fall,
            int n) {
    for (int i = 0; i < n; ++i) {
        const float k = value[i] < target[i] ? rise : fall;
        value[i] = flushTiny(value[i] + (target[i] - value[i]) * k);
    }
}

// The level in dB of each band's loudest bin, from its power, tilted.
void peakDecibels(float* peaks, const float* tiltDb, int n) {
    for (int i = 0; i < n; ++i)
        peaks[i] = decibels(std::sqrt(peaks[i]) + 1e-9f) + tiltDb[i];
}

// The level curve with the usual contrast of 2: the dB range from the floor to 0 dB onto 0...1,
// squared, scaled by the gain, at most 1.
void squareCurve(const float* db, float floorDb, float gain, float* out, int n) {
    const float span = 0.0f - floorDb;
    for (int i = 0; i < n; ++i) {
        const float x = std::clamp((db[i] - floorDb) / span, 0.0f, 1.0f);
        out[i] = std::min(1.0f, gain * (x * x));
    }
}

// 20 x log10(x[i] + floor) for n values.
void decibelsOf(const float* x, float floor, float* out, int n) {
    for (int i = 0; i < n; ++i)
        out[i] = decibels(x[i] + floor);
}

// Sum and pan column of every bin between first and last. A bin too quiet to place goes to the
// spare column `columnCount`, which nobody reads, so that placing needs no branch.
void panColumns(const float* magL, const float* magR, int first, int last, float* sums,
                int* columns, int columnCount) {
    for (int k = first; k <= last; ++k) {
        const float s = magL[k] + magR[k];
        const float pan = s > 0.0f ? (magR[k] - magL[k]) / s : 0.0f;
        // (pan + 1) / 2 x (columns - 1) is never negative, so adding a half and truncating
        // rounds halves away from zero.
        const float x = (pan + 1.0f) * 0.5f * float(columnCount - 1) + 0.5f;
        sums[k] = s;
        columns[k] = s >= 1e-7f ? std::clamp(int(x), 0, columnCount - 1) : columnCount;
    }
}

// The largest value of each band's bins; a band without bins peaks at zero.
void bandPeaks(const float* x, const int* b0, const int* b1, int bands, float* out) {
    for (int i = 0; i < bands; ++i) {
        float peak = 0.0f;
        for (int k = b0[i]; k <= b1[i]; ++k)
            peak = std::max(peak, x[k]);
        out[i] = peak;
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
    const auto wakeAfter = qScopeGuard([this] { wakeIfDue(); });
    if (!m_tapASBD || m_tapASBD->channelsPerFrame == 0)
        return;
    const TapFormat format = *m_tapASBD;
    if (buffers.empty() || !buffers[0].data)
        return;
    const bool matchLoudness = m_matchLoudness.load(std::memory_order_relaxed);

    if (!format.nonInterleaved && format.channelsPerFrame == 2) {
        // The common case, taken straight from the interleaved block into the rings.
        const float* s = buffers[0].data;
        const std::size_t frames = buffers[0].byteSize / sizeof(float) / 2;
        const float gain = m_loudness.gainInterleaved(s, frames, format.sampleRate, matchLoudness);
        feed<2>(s, s + 1, frames, gain);
        return;
    }

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
        // Mono, or more than two channels: the first two (or the one, twice) are taken apart.
        const std::size_t n = buffers[0].byteSize / sizeof(float);
        const std::size_t channels = format.channelsPerFrame;
        if (channels <= n) {
            const std::size_t frames = n / channels;
            ensureSize(m_left, frames);
            ensureSize(m_right, frames);
            const float* s = buffers[0].data;
            const std::size_t rightOffset = channels >= 2 ? 1 : 0;
            for (std::size_t i = 0; i < frames; ++i) {
                m_left[i] = s[i * channels];
                m_right[i] = s[i * channels + rightOffset];
            }
            left = m_left.data();
            right = m_right.data();
            leftCount = rightCount = frames;
        }
    }
    if (leftCount != rightCount)
        return;
    const float gain =
        m_loudness.gain(left, leftCount, right, rightCount, format.sampleRate, matchLoudness);
    feed<1>(left, right, leftCount, gain);
}

template <std::size_t stride>
void AudioEQ::feed(const float* left, const float* right, std::size_t frames, float gain) {
    // Both paths see the loudness-matched samples; the delivered buffers belong to the backend
    // and are only read. The three rings normally stand together and are filled in one pass.
    const bool together = RollingFrame<fftSize>::writeTogether<3>(
        {&m_buf, &m_bufL, &m_bufR}, frames,
        [&](const std::array<float*, 3>& to, std::size_t from, std::size_t count) {
            spreadInto<stride>(left + from * stride, right + from * stride, gain, to[0], to[1],
                               to[2], count);
        });
    if (together) {
        monoFrameReady();
        stereoFrameReady();
        return;
    }
    m_buf.write(frames, [&](float* to, std::size_t from, std::size_t count) {
        mixedInto<stride>(left + from * stride, right + from * stride, gain, to, count);
    });
    monoFrameReady();
    m_bufL.write(frames, [&](float* to, std::size_t from, std::size_t count) {
        scaledInto<stride>(left + from * stride, gain, to, count);
    });
    m_bufR.write(frames, [&](float* to, std::size_t from, std::size_t count) {
        scaledInto<stride>(right + from * stride, gain, to, count);
    });
    stereoFrameReady();
}

// ---- mono levels ----------------------------------------------------------------------------

void AudioEQ::processMono(const float* samples, std::size_t count) {
    m_buf.append(samples, count);
    monoFrameReady();
    wakeIfDue();
}

void AudioEQ::wakeIfDue() {
    if (!m_wakeDue)
        return;
    m_wakeDue = false;
    m_wake.wake();
}

void AudioEQ::monoFrameReady() {
    if (!m_buf.isFull())
        return;
    // Every block analyses the latest full frame, whatever its size: the overlap follows the
    // device's block size, and dt is measured, not counted in samples.
    const double now = m_clock.now();
    const double dt = std::clamp(now - m_lastProcess, 0.001, 0.1);
    m_lastProcess = now;
    analyze(dt);
}

void AudioEQ::analyze(double dt) {
    const EQTuning& t = tuning();
    const double rate = sampleRate();
    if (m_bandMap.sampleRate != rate || m_bandMap.bins != fftSize / 2)
        m_bandMap = BandMap::build(fftSize / 2, bandCount, rate, t.tilt);
    // The bands end at 16 kHz; the bins above it are never read.
    m_analyzer.powers(m_buf.data(), int(m_buf.start()), m_powers.data(), m_bandMap.b1.back() + 1);
    m_bandMap.apply(m_powers.data(), t, m_dbScratch.data(), m_target.data());

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
    follow(m_smoothed.data(), m_shaped.data(), rise, fall, bandCount);

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

    const bool hasSignal = anyAbove(m_buf.data(), fftSize, 1e-6f);

    LevelsFrame& out = m_levelsOut.back();
    out.generation = m_captureGeneration;
    out.hasSignal = hasSignal;
    out.levels = m_levels;
    m_wakeDue |= m_levelsOut.publish();
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

void AudioEQ::BandMap::apply(const float* powers, const EQTuning& t, float* db, float* out) const {
    const int bands = int(b0.size());
    // The loudest bin of a band has the largest power as well as the largest magnitude; only the
    // peaks need their square roots.
    bandPeaks(powers, b0.data(), b1.data(), bands, db);
    peakDecibels(db, tiltDb.data(), bands);
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
    const float gain = float(t.gain);
    const float contrast = float(t.contrast);
    if (contrast == 2.0f) {
        squareCurve(db, floorDb, gain, out, bands);
        return;
    }
    const float span = 0.0f - floorDb;
    for (int i = 0; i < bands; ++i) {
        const float x = std::clamp((db[i] - floorDb) / span, 0.0f, 1.0f);
        out[i] = std::min(1.0f, gain * std::pow(x, contrast));
    }
}

std::vector<float> AudioEQ::bandLevels(const float* magnitudes, int bins, int bands,
                                       double sampleRate, const EQTuning& tuning) {
    if (bands <= 0 || bins < 2)
        return {};
    const BandMap map = BandMap::build(bins, bands, sampleRate, tuning.tilt);
    std::vector<float> powers(static_cast<std::size_t>(bins), 0.0f);
    for (int k = 0; k < bins; ++k)
        powers[std::size_t(k)] = magnitudes[k] * magnitudes[k];
    std::vector<float> db(static_cast<std::size_t>(bands));
    std::vector<float> out(static_cast<std::size_t>(bands));
    map.apply(powers.data(), tuning, db.data(), out.data());
    return out;
}

// ---- stereo field ---------------------------------------------------------------------------

void AudioEQ::processStereo(const float* left, const float* right, std::size_t count) {
    m_bufL.append(left, count);
    m_bufR.append(right, count);
    stereoFrameReady();
    wakeIfDue();
}

void AudioEQ::stereoFrameReady() {
    if (!m_bufL.isFull() || !m_bufR.isFull() || !m_stereoWanted.load(std::memory_order_relaxed))
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
    m_stereoL.magnitudes(m_bufL.data(), int(m_bufL.start()), m_magL.data(), last + 1);
    m_stereoR.magnitudes(m_bufR.data(), int(m_bufR.start()), m_magR.data(), last + 1);

    std::array<float, stereoCols> cols{};
    if (first < last) {
        // Sums and columns first, in a loop that vectorises; then each column keeps its peak.
        float* sums = m_stereoSum.data();
        int* columns = m_stereoColumn.data();
        panColumns(m_magL.data(), m_magR.data(), first, last, sums, columns, stereoCols);
        // Each column keeps its peak, not the sum. Neighbouring bins mostly land in the same
        // column; eight partial maxima keep them from waiting on each other. The last column of
        // each is the spare one of the bins too quiet to place. Every sum placed in a real
        // column is a positive float, and those order as their bit patterns do: an unsigned
        // max compiles to a conditional move, where a float comparison becomes a store under a
        // branch that mispredicts all the time on real music.
        constexpr int lanes = 8;
        std::array<std::array<std::uint32_t, stereoCols + 1>, lanes> partial{};
        const auto place = [&](int lane, int k) {
            std::uint32_t& peak = partial[std::size_t(lane)][std::size_t(columns[k])];
            peak = std::max(peak, std::bit_cast<std::uint32_t>(sums[k]));
        };
        int k = first;
        for (; k + lanes <= last + 1; k += lanes) {
            for (int lane = 0; lane < lanes; ++lane)
                place(lane, k + lane);
        }
        for (; k <= last; ++k)
            place(0, k);
        for (int c = 0; c < stereoCols; ++c) {
            std::uint32_t peak = 0;
            for (const auto& lane : partial)
                peak = std::max(peak, lane[std::size_t(c)]);
            cols[std::size_t(c)] = std::bit_cast<float>(peak);
        }
    }

    // The columns with two copies of each end value on either side: the kernel's taps beyond
    // the ends repeat them.
    std::array<float, stereoCols + 4> padded;
    padded[0] = padded[1] = cols[0];
    std::copy(cols.begin(), cols.end(), padded.begin() + 2);
    padded[stereoCols + 2] = padded[stereoCols + 3] = cols[stereoCols - 1];
    std::array<float, stereoCols> spread;
    for (int c = 0; c < stereoCols; ++c) {
        const float* p = padded.data() + c;
        spread[c] = 0.12f * p[0] + 0.22f * p[1] + 0.32f * p[2] + 0.22f * p[3] + 0.12f * p[4];
    }

    const double dt = std::clamp(now - m_lastStereoTime, 0.005, 0.1);
    m_lastStereoTime = now;
    const float s = float(m_vizConfig.value(smoothingKey) * 2.8 + 0.4);
    const float a = std::exp(float(dt) / (s * -0.02f));
    const float r = std::exp(float(dt) / (s * -0.09f));
    std::array<float, stereoCols> window;
    decibelsOf(spread.data(), 1e-6f, window.data(), stereoCols);
    for (float& x : window) // a window of 70 dB below full scale
        x = std::clamp((x + 70.0f) / 70.0f, 0.0f, 1.0f);
    follow(m_smoothedStereo.data(), window.data(), 1.0f - a, 1.0f - r, stereoCols);

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
    m_wakeDue |= m_stereoOut.publish();
}

// ---- capture epochs -------------------------------------------------------------------------

void AudioEQ::captureReset() {
    m_captureGeneration = QUuid::createUuid();
    m_blocks.clear(); // the capture is gone: what it left waiting is not analysed
    m_loudness.reset();
    m_tapASBD.reset();
    m_buf.clear();
    m_bufL.clear();
    m_bufR.clear();
    m_hasPrevTarget = false;
    m_smoothed.fill(0.0f);
    m_smoothedStereo.fill(0.0f);
}

} // namespace MirlPlayer
