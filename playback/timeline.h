// SPDX-License-Identifier: MIT
// When pictures are shown, from the position in the message. Pure.
//
// The position counts what has been played; picture k (from 0) is due when k + 1 periods have been. Ticks
// come once per period, but not at the very moments at which pictures are due: sound starts a little after
// Play, is reported block by block and follows a clock of its own. So a tick shows the next picture up to
// half a period early and as long as the one after it is not due; a tick that finds that one due too passes
// over the late ones.
#pragma once

#include <algorithm>
#include <cstdint>

#include "codec/message_time.h"

class Timeline {
public:
    // nRate: the message's pictures per second, above 0.
    constexpr explicit Timeline(int nRate) : m_nPeriodMs(PicturePeriodMilliseconds(nRate)) {}

    // The picture that is due at a position, as the number of 20 ms frames played; -1 before the first
    // period.
    constexpr int PictureAt(int64_t nFrame) const {
        return static_cast<int>(nFrame * kFrameMilliseconds / m_nPeriodMs) - 1;
    }
    constexpr int64_t DueMs(int64_t nPicture) const { return (nPicture + 1) * m_nPeriodMs; }

    // The number up to which a tick may show pictures when nOldest is the next one; below nOldest: none.
    constexpr int PictureForTick(int nOldest, int64_t nFrame) const {
        const bool bSoon = 2 * (DueMs(nOldest) - nFrame * kFrameMilliseconds) <= m_nPeriodMs;
        return std::max(PictureAt(nFrame), bSoon ? nOldest : -1);
    }

    // From Play at a position to its first tick, so that ticks and pictures fall together: what is left until
    // the next picture is due, nothing when it is late, a period at most.
    constexpr int MsToTick(int nNext, int64_t nFrame) const {
        return static_cast<int>(
            std::clamp<int64_t>(DueMs(nNext) - nFrame * kFrameMilliseconds, 0, m_nPeriodMs));
    }

private:
    int64_t m_nPeriodMs;
};
