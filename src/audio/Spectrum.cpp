#include "audio/Spectrum.h"
#include "audio/WideLoop.h"

#include <QtGlobal>
#include <algorithm>
#include <cmath>
#include <mutex>

namespace MirlPlayer {

namespace {

// FFTW's planner keeps global state and is not thread-safe; only execution is. Every plan is made
// and destroyed under this mutex. Transforms never take it.
std::mutex& plannerMutex() {
    static std::mutex mutex;
    return mutex;
}

// The scale of the normalised Hann window: its root mean square is 1.
constexpr double hannNorm = 0.8165;

// The two loops around the transform run on every frame.
MIRL_WIDE_LOOP void applyWindow(const float* samples, const float* window, float* in, int n) {
    for (int i = 0; i < n; ++i)
        in[i] = samples[i] * window[i];
}

MIRL_WIDE_LOOP void magnitudesOf(const float* x, float* out, int half, float scale) {
    // x holds half + 1 complex bins as (re, im) pairs.
    for (int k = 1; k < half; ++k) {
        const float re = x[2 * k];
        const float im = x[2 * k + 1];
        out[k] = std::sqrt(re * re + im * im) * scale;
    }
}

} // namespace

void Spectrum::FftwFree::operator()(void* p) const {
    fftwf_free(p);
}

void Spectrum::PlanDestroy::operator()(fftwf_plan_s* plan) const {
    std::lock_guard lock(plannerMutex());
    fftwf_destroy_plan(plan);
}

Spectrum::Spectrum(int size)
    : m_size(size)
    , m_half(size / 2)
    , m_log2n(size > 0 ? unsigned(std::log2(double(size))) : 0) {
    if (size < 2)
        qFatal("Spectrum: a transform needs at least two samples, not %d", size);
    m_window.reset(static_cast<float*>(fftwf_malloc(sizeof(float) * size_t(size))));
    m_in.reset(static_cast<float*>(fftwf_malloc(sizeof(float) * size_t(size))));
    m_out.reset(
        static_cast<fftwf_complex*>(fftwf_malloc(sizeof(fftwf_complex) * size_t(m_half + 1))));
    if (!m_window || !m_in || !m_out)
        qFatal("Spectrum: no memory for a %d-point transform", size);
    {
        // FFTW_MEASURE scribbles over the arrays while it plans; they are filled afterwards.
        std::lock_guard lock(plannerMutex());
        m_setup.reset(fftwf_plan_dft_r2c_1d(size, m_in.get(), m_out.get(), FFTW_MEASURE));
    }
    if (!m_setup)
        qFatal("Spectrum: FFTW could not plan a %d-point transform", size);
    for (int n = 0; n < size; ++n)
        m_window[n] = float(hannNorm * (1.0 - std::cos(2.0 * M_PI * n / size)));
}

Spectrum::~Spectrum() = default;

void Spectrum::magnitudes(const float* samples, float* out, int count) {
    applyWindow(samples, m_window.get(), m_in.get(), m_size);
    fftwf_execute(m_setup.get());
    ++m_transforms;
    const fftwf_complex* x = m_out.get();
    const float scale = 2.0f / float(m_size);
    out[0] = std::sqrt(x[0][0] * x[0][0] + x[m_half][0] * x[m_half][0]) * scale;
    magnitudesOf(reinterpret_cast<const float*>(x), out, std::clamp(count, 1, m_half), scale);
}

std::vector<float> Spectrum::magnitudes(const std::vector<float>& samples) {
    std::vector<float> out(size_t(m_half), 0.0f);
    if (samples.size() == size_t(m_size))
        magnitudes(samples.data(), out.data());
    return out;
}

} // namespace MirlPlayer
