#pragma once

#include "platform/CaptureBackend.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstddef>
#include <memory>

namespace MirlPlayer {

// Carries sample blocks from the audio system's real-time thread to the analysis queue without
// allocating or locking on the audio side: a fixed ring of preallocated slots with one producer
// and one consumer. The producer also decides when the consumer is worth waking: each wake-up of
// a thread costs more than analysing a block, so blocks are gathered until enough time's worth
// of frames has arrived for a result to be due.
class BlockRing {
public:
    static constexpr std::size_t slotCount = 16;
    static constexpr std::size_t slotFloats = 8192; // 4096 stereo frames; longer blocks are split

    struct Slot {
        CaptureFormat format;
        quint32 frames = 0;
        std::array<float, slotFloats> samples{};
    };

    BlockRing()
        : m_slots(std::make_unique<std::array<Slot, slotCount>>()) {}
    BlockRing(const BlockRing&) = delete;
    BlockRing& operator=(const BlockRing&) = delete;

    // Producer: copies the block in, in pieces when it is longer than a slot; what finds no free
    // slot is dropped (the consumer is that far behind, and only the newest audio is shown).
    // Returns whether at least `wakeFrames` frames came in since it last returned true.
    bool push(const CaptureBlock& block, std::size_t wakeFrames) {
        const std::size_t channels = block.format.channels;
        if (channels == 0 || channels > slotFloats || !block.samples)
            return false;
        const std::size_t perSlot = slotFloats / channels;
        for (std::size_t done = 0; done < block.frames;) {
            const std::size_t head = m_head.load(std::memory_order_relaxed);
            if (head - m_tail.load(std::memory_order_acquire) >= slotCount)
                break;
            Slot& slot = (*m_slots)[head % slotCount];
            const std::size_t frames = std::min<std::size_t>(perSlot, block.frames - done);
            std::copy_n(block.samples + done * channels, frames * channels, slot.samples.data());
            slot.format = block.format;
            slot.frames = quint32(frames);
            m_head.store(head + 1, std::memory_order_release);
            done += frames;
        }
        m_sinceWake += block.frames;
        if (m_sinceWake < wakeFrames)
            return false;
        m_sinceWake = 0;
        return true;
    }

    // Consumer: hands every slot that arrived to `take`, oldest first.
    template <typename F> void drain(F&& take) {
        const std::size_t head = m_head.load(std::memory_order_acquire);
        for (std::size_t tail = m_tail.load(std::memory_order_relaxed); tail != head; ++tail) {
            take(static_cast<const Slot&>((*m_slots)[tail % slotCount]));
            m_tail.store(tail + 1, std::memory_order_release);
        }
    }

    // Consumer, while no producer runs: forgets whatever is waiting.
    void clear() {
        m_tail.store(m_head.load(std::memory_order_acquire), std::memory_order_release);
        m_sinceWake = 0;
    }

private:
    std::unique_ptr<std::array<Slot, slotCount>> m_slots;
    std::atomic<std::size_t> m_head{0}; // slots published by the producer
    std::atomic<std::size_t> m_tail{0}; // slots taken by the consumer
    std::size_t m_sinceWake = 0;        // producer's
};

} // namespace MirlPlayer
