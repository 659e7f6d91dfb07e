// SPDX-License-Identifier: MIT
// How fast a message is read when no sound device sets the pace.
#pragma once

#include <algorithm>
#include <chrono>

#include "audio/play_speed.h"
#include "codec/message_time.h"
#include "codec/queue_limits.h"

// As fast as it would be heard at the speed, and as far ahead as the sound's queue would take. Not
// synchronised.
class RealTimePace {
public:
    using Clock = std::chrono::steady_clock;

    bool HasRoom(int nBlocks, Clock::time_point now) const { return Room(now) >= nBlocks; }
    void Take(int nBlocks, Clock::time_point now) {
        m_nRoom = Room(now) - nBlocks;
        m_since = now;
    }
    void SetSpeed(int nSpeed, Clock::time_point now) {
        Take(0, now);
        m_nSpeed = nSpeed;
    }

private:
    int64_t Room(Clock::time_point now) const {
        const auto passed = std::chrono::duration_cast<std::chrono::milliseconds>(now - m_since);
        const int64_t nFrames = passed.count() * m_nSpeed / kNormalSpeed / kFrameMilliseconds;
        return std::min<int64_t>(m_nRoom + nFrames, kMaxQueuedBlocks);
    }

    int m_nSpeed = kNormalSpeed;
    int64_t m_nRoom = kMaxQueuedBlocks;
    Clock::time_point m_since = Clock::now();
};
