#pragma once

#include <fftw3.h>
#include <memory>
#include <vector>

namespace MirlPlayer {

// A small FFT engine: a Hann-windowed real transform of a fixed size, reduced to magnitudes.
// The FFTW plan is made once per instance and never rebuilt; every buffer is allocated at
// construction, so a transform allocates nothing.
//
// The window is the periodic Hann window scaled so that its root mean square is 1:
// w[n] = 0.8165 x (1 - cos(2 pi n / size)). It is applied after the transform, where it is a
// three-tap sum of neighbouring bins, instead of to the samples before it. That spares a pass
// over the frame and lets the transform read a ring buffer in place: a frame that starts
// part-way through its buffer is the frame rotated, which after the transform is one phase
// factor per bin, folded into the same sum.
class Spectrum {
public:
    // The plan of every transform here: measured, and never writing to its input, which is what
    // lets the transform read the caller's samples without a copy. `in` holds `size` floats,
    // `out` size / 2 + 1 bins. Null when FFTW cannot plan it.
    static fftwf_plan plan(int size, float* in, fftwf_complex* out);

    explicit Spectrum(int size);
    ~Spectrum();
    Spectrum(const Spectrum&) = delete;
    Spectrum& operator=(const Spectrum&) = delete;

    int size() const { return m_size; }
    int half() const { return m_half; }
    unsigned log2n() const { return m_log2n; }

    // `samples` holds `size` floats, `out` receives `half` magnitudes: for bin k from 1 to
    // half - 1, 2 x |X[k]| / size of the windowed frame. Bin 0 carries the windowed DC and
    // Nyquist terms packed together, as consumers never read it.
    void magnitudes(const float* samples, float* out) { magnitudes(samples, 0, out, m_half); }
    // The same for the first `count` bins only (at most `half`), for callers that never read
    // the bins above.
    void magnitudes(const float* samples, float* out, int count) {
        magnitudes(samples, 0, out, count);
    }
    // The same for a frame kept in a ring of `size` samples whose oldest sample sits at
    // `start`. The transform reads the ring where it is when it is aligned as FFTW aligns its
    // own buffers (as an array declared alignas(64) is), and a copy of it otherwise.
    void magnitudes(const float* ring, int start, float* out, int count);
    // The squares of the magnitudes, for callers that only compare bins or take their logarithm:
    // it spares a square root per bin.
    void powers(const float* ring, int start, float* out, int count);
    std::vector<float> magnitudes(const std::vector<float>& samples);

    // How many transforms this instance has run.
    unsigned long long transformCount() const { return m_transforms; }

private:
    struct FftwFree {
        void operator()(void* p) const;
    };
    struct PlanDestroy {
        void operator()(fftwf_plan_s* plan) const;
    };

    int m_size;
    int m_half;
    unsigned m_log2n;
    // cos(2 pi j / size), from a table of a quarter wave when the size allows one.
    float cosineAt(int j) const;
    void windowed(const float* ring, int start, float* out, int count, bool squared);

    std::unique_ptr<float[], FftwFree> m_in;
    std::unique_ptr<fftwf_complex[], FftwFree> m_out;
    std::unique_ptr<fftwf_plan_s, PlanDestroy> m_setup;
    int m_alignment = 0;
    std::vector<float> m_quarterCosine;
    unsigned long long m_transforms = 0;
};

} // namespace MirlPlayer
