// The blocks of one output, from being written to being notified. Not thread-safe: its owner locks.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "platform/sound/mmsystem.h"

// A ring with three marks: blocks to be heard, behind them blocks done whose notification is still due.
// Positions count the bytes written since the output was opened and never start again, so that a position
// learnt before a reset cannot touch a block written after it.
class WaveQueue {
public:
    // Appends a block and marks it as queued. False, with nothing changed, when the ring is full.
    bool Push(WAVEHDR* block);

    // Marks as done every block whose last byte lies below `position`.
    void MarkHeard(std::uint64_t position);

    // Marks every block as done.
    void MarkAll();

    // Takes out the oldest done block, or gives null when there is none.
    WAVEHDR* TakeDone();

    // Blocks written and not done.
    std::size_t Pending() const { return m_written - m_done; }

private:
    struct Entry {
        WAVEHDR* block;
        std::uint64_t end;  // position just past the block's last byte
    };

    void MarkOldest();
    Entry& At(std::size_t index) { return m_ring[index % m_ring.size()]; }

    std::array<Entry, WAVEOUT_MAX_BLOCKS> m_ring{};
    std::size_t m_taken = 0;  // running counts; taken <= done <= written
    std::size_t m_done = 0;
    std::size_t m_written = 0;
    std::uint64_t m_bytes = 0;
};
