// SPDX-License-Identifier: MIT
// The position of an output whose sound is a clock's: bytes pass at the sample rate while it runs and stop
// where the written bytes end. Pure arithmetic on the times it is given; not thread-safe.
#pragma once

#include <cstdint>

class WaveClock {
public:
    // Starts paused, with `written` bytes written and all of them up to `heard` heard.
    WaveClock(std::uint64_t bytesPerSecond, std::uint64_t written = 0, std::uint64_t heard = 0);

    // Times are microseconds of any steady clock and never decrease. `written`: bytes, those heard included.
    void Write(std::uint64_t nowUs, std::uint64_t written);
    void Pause(std::uint64_t nowUs);
    void Restart(std::uint64_t nowUs);
    void Reset(std::uint64_t nowUs);

    // The position reached, in whole 16-bit samples' bytes.
    std::uint64_t Heard(std::uint64_t nowUs) const;

    std::uint64_t Written() const { return m_written; }
    bool Running() const { return m_running; }

private:
    // Moves the base to now, so that time spent paused or dry is never counted.
    void Rebase(std::uint64_t nowUs);

    std::uint64_t m_bytesPerSecond;
    std::uint64_t m_written;
    std::uint64_t m_baseHeard;
    std::uint64_t m_baseUs = 0;
    bool m_running = false;
};
