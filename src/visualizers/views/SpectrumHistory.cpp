#include "visualizers/views/SpectrumHistory.h"

#include <algorithm>

namespace MirlPlayer {

SpectrumHistory::SpectrumHistory(int count, int width, Newest newest)
    : m_count(count)
    , m_width(width)
    , m_newest(newest)
    , m_heights(std::size_t(count) * std::size_t(width), 0.0f) {}

float* SpectrumHistory::shift() {
    const auto w = std::ptrdiff_t(m_width);
    if (m_newest == Newest::first) {
        std::copy_backward(m_heights.begin(), m_heights.end() - w, m_heights.end());
        return m_heights.data();
    }
    std::copy(m_heights.begin() + w, m_heights.end(), m_heights.begin());
    return m_heights.data() + m_heights.size() - w;
}

} // namespace MirlPlayer
