#include "platform/sound/wave_queue.h"

bool WaveQueue::Push(WAVEHDR* block) {
    if (m_written - m_taken == m_ring.size()) return false;
    m_bytes += block->dwBufferLength;
    At(m_written) = {block, m_bytes};
    ++m_written;
    block->dwFlags = (block->dwFlags & ~WHDR_DONE) | WHDR_INQUEUE;
    return true;
}

void WaveQueue::MarkHeard(std::uint64_t position) {
    while (m_done != m_written && At(m_done).end <= position) MarkOldest();
}

void WaveQueue::MarkAll() {
    while (m_done != m_written) MarkOldest();
}

WAVEHDR* WaveQueue::TakeDone() {
    if (m_taken == m_done) return nullptr;
    return At(m_taken++).block;
}

void WaveQueue::MarkOldest() {
    WAVEHDR* block = At(m_done++).block;
    block->dwFlags = (block->dwFlags & ~WHDR_INQUEUE) | WHDR_DONE;
}
