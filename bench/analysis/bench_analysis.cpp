// Pushes a minute of synthetic 48 kHz stereo through AudioEQ::processBlock in 512-frame blocks,
// paced by a manual clock as if it arrived in real time, and compares the cost per block with the
// bare FFTW transforms the same blocks needed, measured in the same run. Heap allocations are
// counted through a replaced global operator new.
#include "audio/AudioEQ.h"
#include "audio/Spectrum.h"
#include "core/Clock.h"
#include "core/Preferences.h"
#include "visualizers/VizConfig.h"

#include <QCoreApplication>
#include <QTemporaryDir>
#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <new>
#include <random>
#include <vector>

namespace {

std::atomic<bool> countingAllocations{false};
std::atomic<unsigned long long> allocations{0};

void* allocate(std::size_t size, std::size_t alignment = 0) {
    if (countingAllocations.load(std::memory_order_relaxed))
        allocations.fetch_add(1, std::memory_order_relaxed);
    if (size == 0)
        size = 1;
    void* p = nullptr;
    if (alignment > alignof(std::max_align_t)) {
        if (posix_memalign(&p, alignment, size) != 0)
            p = nullptr;
    } else {
        p = std::malloc(size);
    }
    if (!p)
        throw std::bad_alloc();
    return p;
}

} // namespace

void* operator new(std::size_t size) {
    return allocate(size);
}
void* operator new[](std::size_t size) {
    return allocate(size);
}
void* operator new(std::size_t size, std::align_val_t a) {
    return allocate(size, std::size_t(a));
}
void* operator new[](std::size_t size, std::align_val_t a) {
    return allocate(size, std::size_t(a));
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    try {
        return allocate(size);
    } catch (...) {
        return nullptr;
    }
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    try {
        return allocate(size);
    } catch (...) {
        return nullptr;
    }
}
void operator delete(void* p) noexcept {
    std::free(p);
}
void operator delete[](void* p) noexcept {
    std::free(p);
}
void operator delete(void* p, std::size_t) noexcept {
    std::free(p);
}
void operator delete[](void* p, std::size_t) noexcept {
    std::free(p);
}
void operator delete(void* p, std::align_val_t) noexcept {
    std::free(p);
}
void operator delete[](void* p, std::align_val_t) noexcept {
    std::free(p);
}
void operator delete(void* p, std::size_t, std::align_val_t) noexcept {
    std::free(p);
}
void operator delete[](void* p, std::size_t, std::align_val_t) noexcept {
    std::free(p);
}

using namespace MirlPlayer;

// CPU time of this thread, in nanoseconds. On a machine shared with other work, wall time also
// counts the moments the scheduler gave the core to someone else; CPU time counts only ours.
double threadNanos() {
    timespec ts{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &ts);
    return double(ts.tv_sec) * 1e9 + double(ts.tv_nsec);
}

namespace {

constexpr double rate = 48000.0;
constexpr std::size_t blockFrames = 512;
constexpr std::size_t seconds = 60;
// Timed chunks of 128 ms of audio, four stereo analyses each.
constexpr std::size_t chunkBlocks = 12;

// Music-like test material: a bass line, a few panned partials, a hi-hat of noise, with a swell
// so the loudness matcher keeps working. One second of it is pushed sixty times over: the capture
// backend hands over blocks it has just copied, so they arrive warm in the cache, as they do here.
constexpr std::size_t loopBlocks = 96;

std::vector<float> makeSignal() {
    const std::size_t frames = loopBlocks * blockFrames;
    std::vector<float> s(frames * 2);
    std::mt19937 rng(7);
    std::uniform_real_distribution<float> noise(-1.0f, 1.0f);
    for (std::size_t i = 0; i < frames; ++i) {
        const double t = double(i) / rate;
        const double swell = 0.25 + 0.2 * std::sin(2 * M_PI * t);
        const double bass = std::sin(2 * M_PI * 55.0 * t) * 0.5;
        const double mid = std::sin(2 * M_PI * 440.0 * t) * 0.3;
        const double high = std::sin(2 * M_PI * 3520.0 * t) * 0.1;
        const double hat = std::fmod(t, 0.25) < 0.02 ? noise(rng) * 0.2 : 0.0;
        s[2 * i] = float(swell * (bass + mid * 0.8 + high * 0.2 + hat));
        s[2 * i + 1] = float(swell * (bass + mid * 0.3 + high * 0.9 + hat));
    }
    return s;
}

double median(std::vector<double> v) {
    std::sort(v.begin(), v.end());
    return v.empty() ? 0.0 : v[v.size() / 2];
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    QTemporaryDir dir;
    Preferences prefs(dir.filePath("preferences.conf"));
    VizConfig viz(prefs);
    ManualClock clock;
    const EQTuning tuning;
    AudioEQ eq(prefs, viz, clock, &tuning);
    const TapFormat format{rate, true, 2, false};

    const std::vector<float> signal = makeSignal();
    const std::size_t blocks = std::size_t(rate) * seconds / blockFrames;
    const auto blockAt = [&signal](std::size_t b) {
        return signal.data() + (b % loopBlocks) * blockFrames * 2;
    };
    const double blockSeconds = double(blockFrames) / rate;

    const auto transforms = [&eq] {
        return eq.analyzer().transformCount() + eq.stereoL().transformCount() +
               eq.stereoR().transformCount();
    };
    const auto pushAll = [&] {
        for (std::size_t b = 0; b < blocks; ++b) {
            clock.advance(blockSeconds);
            eq.processBlock(blockAt(b), blockFrames, format);
        }
    };

    // Warm up: plans, scratch buffers, caches.
    pushAll();

    // Allocations in steady state.
    allocations = 0;
    countingAllocations = true;
    pushAll();
    countingAllocations = false;
    const double allocsPerBlock = double(allocations.load()) / double(blocks);

    // The bare transforms: the same 2048-point real FFT, planned the same way, on real frames.
    const int n = AudioEQ::fftSize;
    float* in = fftwf_alloc_real(n);
    fftwf_complex* out = fftwf_alloc_complex(n / 2 + 1);
    fftwf_plan plan = Spectrum::plan(n, in, out);
    std::copy(signal.begin(), signal.begin() + n, in);

    // Time. Chunks of analysis and chunks of bare transforms alternate, so that both see the same
    // load on a shared machine.
    std::vector<double> chunkNs;
    std::vector<double> fftNs;
    constexpr int passes = 3;
    const unsigned long long transformsBefore = transforms();
    for (int p = 0; p < passes; ++p) {
        for (std::size_t b = 0; b + chunkBlocks <= blocks; b += chunkBlocks) {
            const unsigned long long chunkTransforms = transforms();
            double start = threadNanos();
            for (std::size_t i = b; i < b + chunkBlocks; ++i) {
                clock.advance(blockSeconds);
                eq.processBlock(blockAt(i), blockFrames, format);
            }
            chunkNs.push_back((threadNanos() - start) / chunkBlocks);
            const unsigned long long count = transforms() - chunkTransforms;
            start = threadNanos();
            for (unsigned long long i = 0; i < count; ++i)
                fftwf_execute(plan);
            fftNs.push_back((threadNanos() - start) / double(std::max(count, 1ULL)));
        }
    }
    const double transformsPerBlock =
        double(transforms() - transformsBefore) / double(chunkNs.size() * chunkBlocks);
    const double nsPerBlock = median(chunkNs);
    fftwf_destroy_plan(plan);
    fftwf_free(in);
    fftwf_free(out);
    const double nsPerTransform = median(fftNs);

    const double xRealtime = blockSeconds * 1e9 / nsPerBlock;
    const double ratio = nsPerBlock / (transformsPerBlock * nsPerTransform);

    std::printf("blocks: %zu of %zu frames (%zu s of 48 kHz stereo), %d timed passes\n", blocks,
                blockFrames, seconds, passes);
    std::printf("ns per block (median):       %.0f\n", nsPerBlock);
    std::printf("times realtime:              %.0f x\n", xRealtime);
    std::printf("transforms per block:        %.3f\n", transformsPerBlock);
    std::printf("bare FFTW transform:         %.0f ns\n", nsPerTransform);
    std::printf("ratio to bare transforms:    %.2f\n", ratio);
    std::printf("heap allocations per block:  %.4f\n", allocsPerBlock);
    std::printf("{\"bench\":\"analysis\",\"ns_per_block\":%.0f,\"x_realtime\":%.0f,"
                "\"ratio_to_fft\":%.3f,\"fft_ns\":%.0f,\"transforms_per_block\":%.3f,"
                "\"allocs_per_block\":%.4f}\n",
                nsPerBlock, xRealtime, ratio, nsPerTransform, transformsPerBlock, allocsPerBlock);
    return 0;
}
