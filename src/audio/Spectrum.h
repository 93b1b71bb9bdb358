#pragma once

#include <fftw3.h>
#include <memory>
#include <vector>

namespace MirlPlayer {

// A small FFT engine: a Hann-windowed real transform of a fixed size, reduced to magnitudes.
// The FFTW plan is made once per instance and never rebuilt; every buffer is allocated at
// construction, so a transform allocates nothing.
class Spectrum {
public:
    explicit Spectrum(int size);
    ~Spectrum();
    Spectrum(const Spectrum&) = delete;
    Spectrum& operator=(const Spectrum&) = delete;

    int size() const { return m_size; }
    int half() const { return m_half; }
    unsigned log2n() const { return m_log2n; }
    const float* window() const { return m_window.get(); }

    // `samples` holds `size` floats, `out` receives `half` magnitudes: for bin k from 1 to
    // half - 1, 2 x |X[k]| / size of the windowed frame. Bin 0 carries DC and Nyquist packed
    // together, as consumers never read it.
    void magnitudes(const float* samples, float* out) { magnitudes(samples, out, m_half); }
    // The same for the first `count` bins only (at most `half`), for callers that never read
    // the bins above.
    void magnitudes(const float* samples, float* out, int count);
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
    std::unique_ptr<float[], FftwFree> m_window;
    std::unique_ptr<float[], FftwFree> m_in;
    std::unique_ptr<fftwf_complex[], FftwFree> m_out;
    std::unique_ptr<fftwf_plan_s, PlanDestroy> m_setup;
    unsigned long long m_transforms = 0;
};

} // namespace MirlPlayer
