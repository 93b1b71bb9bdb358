#pragma once

#include <span>
#include <vector>

namespace MirlPlayer {

// The rows of history a waterfall renderer keeps: `count` rows of `width` heights each, stored
// row after row. Each push moves every row one place away from the newest end and writes the new
// row there, resampled to `width` entries (entry c takes source entry min(c x n / width, n - 1);
// an empty source gives zeros). The newest row is the first one (a waterfall's front row) or the
// last one (the analyzer's right-hand column).
class SpectrumHistory {
public:
    enum class Newest { first, last };

    SpectrumHistory(int count, int width, Newest newest);

    template <typename T> void push(std::span<const T> source) {
        float* row = shift();
        const std::size_t n = source.size();
        for (int c = 0; c < m_width; ++c)
            row[c] = n == 0 ? 0.0f : float(source[std::min(std::size_t(c) * n / m_width, n - 1)]);
    }

    int count() const { return m_count; }
    int width() const { return m_width; }
    const std::vector<float>& heights() const { return m_heights; }

private:
    // Moves the rows one place and returns the row to write.
    float* shift();

    int m_count;
    int m_width;
    Newest m_newest;
    std::vector<float> m_heights;
};

} // namespace MirlPlayer
