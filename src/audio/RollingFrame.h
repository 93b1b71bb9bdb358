#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>

namespace MirlPlayer {

// The latest `capacity` samples of a stream, kept in a ring. A block costs one copy of itself:
// nothing already held moves. A full ring is the frame rotated, its oldest sample at start();
// Spectrum takes it that way, and reads it in place, so the ring is aligned as FFTW aligns its
// own buffers.
template <std::size_t capacity> class RollingFrame {
public:
    void append(const float* samples, std::size_t n) {
        write(n, [samples](float* to, std::size_t from, std::size_t count) {
            std::memcpy(to, samples + from, count * sizeof(float));
        });
    }

    // Appends `n` samples that `produce(to, from, count)` writes straight into the ring: samples
    // from ... from + count - 1 of the block, to `to`. It is called once or twice (where the
    // ring wraps), and only for the samples that the ring keeps, so a block can be converted on
    // its way in without a copy in between.
    template <typename Produce> void write(std::size_t n, Produce&& produce) {
        if (n >= capacity) {
            produce(m_ring.data(), n - capacity, capacity);
            m_next = 0;
            m_count = capacity;
            return;
        }
        const std::size_t first = std::min(n, capacity - m_next);
        produce(m_ring.data() + m_next, 0, first);
        if (n > first)
            produce(m_ring.data(), first, n - first);
        m_next = (m_next + n) % capacity;
        m_count = std::min(capacity, m_count + n);
    }

    // Appends `n` samples to rings that stand at the same place, in one pass: `produce(to, from,
    // count)` as for write(), with `to` holding one destination per ring. Rings that stand apart
    // are left alone, and the answer is false.
    template <std::size_t rings, typename Produce>
    static bool writeTogether(const std::array<RollingFrame*, rings>& frames, std::size_t n,
                              Produce&& produce) {
        RollingFrame& lead = *frames[0];
        for (const RollingFrame* f : frames) {
            if (f->m_next != lead.m_next || f->m_count != lead.m_count)
                return false;
        }
        lead.write(n, [&](float* to, std::size_t from, std::size_t count) {
            std::array<float*, rings> targets;
            for (std::size_t i = 0; i < rings; ++i)
                targets[i] = frames[i]->m_ring.data() + (to - lead.m_ring.data());
            produce(targets, from, count);
        });
        for (RollingFrame* f : frames) {
            f->m_next = lead.m_next;
            f->m_count = lead.m_count;
        }
        return true;
    }

    bool isFull() const { return m_count == capacity; }
    std::size_t count() const { return m_count; }
    void clear() {
        m_next = 0;
        m_count = 0;
    }

    // The ring itself, `capacity` samples; only the first count() mean anything until it is
    // full.
    const float* data() const { return m_ring.data(); }
    // Where the oldest held sample sits once the ring is full.
    std::size_t start() const { return isFull() ? m_next : 0; }

private:
    alignas(64) std::array<float, capacity> m_ring{};
    std::size_t m_next = 0; // where the next sample goes
    std::size_t m_count = 0;
};

} // namespace MirlPlayer
