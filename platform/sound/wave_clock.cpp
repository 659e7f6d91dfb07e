// SPDX-License-Identifier: MIT
#include "platform/sound/wave_clock.h"

#include <algorithm>

WaveClock::WaveClock(std::uint64_t bytesPerSecond, std::uint64_t written, std::uint64_t heard)
    : m_bytesPerSecond(bytesPerSecond), m_written(written), m_baseHeard(heard) {}

void WaveClock::Write(std::uint64_t nowUs, std::uint64_t written) {
    if (m_running && Heard(nowUs) == m_written) Rebase(nowUs);
    m_written = written;
}

void WaveClock::Pause(std::uint64_t nowUs) {
    Rebase(nowUs);
    m_running = false;
}

void WaveClock::Restart(std::uint64_t nowUs) {
    if (m_running) return;
    Rebase(nowUs);
    m_running = true;
}

void WaveClock::Reset(std::uint64_t nowUs) {
    m_baseHeard = m_written;
    m_baseUs = nowUs;
}

std::uint64_t WaveClock::Heard(std::uint64_t nowUs) const {
    if (!m_running) return m_baseHeard;
    const std::uint64_t passed = (nowUs - m_baseUs) * m_bytesPerSecond / 1000000 / 2 * 2;
    return std::min(m_written, m_baseHeard + passed);
}

void WaveClock::Rebase(std::uint64_t nowUs) {
    m_baseHeard = Heard(nowUs);
    m_baseUs = nowUs;
}
