#include "audio/Spectrum.h"

#include <QtGlobal>
#include <algorithm>
#include <cmath>
#include <cstring>
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

// The power of one windowed bin from the bins y[k-1], y[k], y[k+1] (pairs at y). See
// windowedBins.
inline float windowedPower(const float* y, float c2, float s2) {
    const float a = y[-2];
    const float b = y[-1];
    const float p = y[2];
    const float q = y[3];
    const float x = y[0] - (c2 * (a + p) + s2 * (b - q));
    const float z = y[1] - (c2 * (b + q) + s2 * (p - a));
    return x * x + z * z;
}

// Bins 1 ... count - 1 of the windowed frame, from the transform y (pairs of re, im) of the frame
// rotated so that it starts at a ring position whose phase factor is (c, s). The periodic Hann
// window multiplies the samples by h - h/2 (e^(i theta n) + e^(-i theta n)), which moves each bin
// half-way towards its neighbours: Xw[k] = h (X[k] - X[k-1] / 2 - X[k+1] / 2). Undoing the
// rotation turns X[k] into y[k] times the k-th power of the phase factor; only the magnitude is
// kept, so that power is divided out and the neighbours are turned by the factor and its
// conjugate: Xw[k] ~ y[k] - c/2 (y[k-1] + y[k+1]) + i s/2 (y[k-1] - y[k+1]). `scale` includes h;
// `squared` keeps the square of each magnitude.
template <bool squared>
void windowedBins(const float* y, float* out, int count, float c, float s, float scale) {
    const float c2 = 0.5f * c;
    const float s2 = 0.5f * s;
    for (int k = 1; k < count; ++k) {
        const float power = windowedPower(y + 2 * k, c2, s2);
        out[k] = squared ? power * scale : std::sqrt(power) * scale;
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

fftwf_plan Spectrum::plan(int size, float* in, fftwf_complex* out) {
    std::lock_guard lock(plannerMutex());
    return fftwf_plan_dft_r2c_1d(size, in, out, FFTW_MEASURE | FFTW_PRESERVE_INPUT);
}

Spectrum::Spectrum(int size)
    : m_size(size)
    , m_half(size / 2)
    , m_log2n(size > 0 ? unsigned(std::log2(double(size))) : 0) {
    if (size < 2)
        qFatal("Spectrum: a transform needs at least two samples, not %d", size);
    const auto floats = [](int n) { return static_cast<float*>(fftwf_malloc(sizeof(float) * n)); };
    m_in.reset(floats(size));
    m_out.reset(static_cast<fftwf_complex*>(fftwf_malloc(sizeof(fftwf_complex) * (m_half + 1))));
    if (!m_in || !m_out)
        qFatal("Spectrum: no memory for a %d-point transform", size);
    // FFTW_MEASURE scribbles over the arrays while it plans; they are filled afterwards.
    m_setup.reset(plan(size, m_in.get(), m_out.get()));
    if (!m_setup)
        qFatal("Spectrum: FFTW could not plan a %d-point transform", size);
    m_alignment = fftwf_alignment_of(m_in.get());
    if (size % 4 == 0) {
        m_quarterCosine.resize(std::size_t(size / 4 + 1));
        for (int j = 0; j <= size / 4; ++j)
            m_quarterCosine[std::size_t(j)] = float(std::cos(2.0 * M_PI * j / size));
    }
}

float Spectrum::cosineAt(int j) const {
    // j is within -size ... 2 size here; the division of a general remainder costs more than
    // the table saves.
    if (j < 0)
        j += m_size;
    else if (j >= m_size)
        j -= m_size;
    if (m_quarterCosine.empty())
        return float(std::cos(2.0 * M_PI * j / m_size));
    const int quarter = m_size / 4;
    if (j <= quarter)
        return m_quarterCosine[std::size_t(j)];
    if (j <= 2 * quarter)
        return -m_quarterCosine[std::size_t(2 * quarter - j)];
    if (j <= 3 * quarter)
        return -m_quarterCosine[std::size_t(j - 2 * quarter)];
    return m_quarterCosine[std::size_t(m_size - j)];
}

Spectrum::~Spectrum() = default;

void Spectrum::magnitudes(const float* ring, int start, float* out, int count) {
    windowed(ring, start, out, count, false);
}

void Spectrum::powers(const float* ring, int start, float* out, int count) {
    windowed(ring, start, out, count, true);
}

void Spectrum::windowed(const float* ring, int start, float* out, int count, bool squared) {
    if (start < 0 || start >= m_size)
        start = ((start % m_size) + m_size) % m_size;
    // The plan never writes to its input, so the caller's samples are read where they are. FFTW
    // only allows that for input aligned as the planned buffer was; anything else is copied into
    // that buffer first, unrotated on the way.
    float* in = const_cast<float*>(ring);
    if (fftwf_alignment_of(in) != m_alignment) {
        std::memcpy(m_in.get(), ring + start, sizeof(float) * size_t(m_size - start));
        std::memcpy(m_in.get() + (m_size - start), ring, sizeof(float) * size_t(start));
        in = m_in.get();
        start = 0;
    }
    fftwf_execute_dft_r2c(m_setup.get(), in, m_out.get());
    ++m_transforms;
    const int last = std::clamp(count, 1, m_half);
    const float* y = reinterpret_cast<const float*>(m_out.get());

    const float c = cosineAt(start);
    const float s = cosineAt(start - m_size / 4);
    const float scale = float(hannNorm * 2.0 / double(m_size));
    // DC and Nyquist: their neighbours outside 0 ... half are the conjugates of those inside, so
    // each loses the real part of its one inner neighbour, turned back by the rotation.
    const float dc = y[0] - (y[2] * c - y[3] * s);
    const float nyquist = y[2 * m_half] - (y[2 * m_half - 2] * c + y[2 * m_half - 1] * s);
    const float packed = (dc * dc + nyquist * nyquist) * scale * scale;
    if (squared) {
        out[0] = packed;
        windowedBins<true>(y, out, last, c, s, scale * scale);
    } else {
        out[0] = std::sqrt(packed);
        windowedBins<false>(y, out, last, c, s, scale);
    }
}

std::vector<float> Spectrum::magnitudes(const std::vector<float>& samples) {
    std::vector<float> out(size_t(m_half), 0.0f);
    if (samples.size() == size_t(m_size))
        magnitudes(samples.data(), out.data());
    return out;
}

} // namespace MirlPlayer
