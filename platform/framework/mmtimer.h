// SPDX-License-Identifier: MIT
// Periodic timer in the shape of the multimedia timers.
#pragma once

#include "platform/framework/wintypes.h"

using MMTIMERID = UINT;
using TIMECALLBACK = void (*)(UINT timerId, UINT message, DWORD_PTR user, DWORD_PTR, DWORD_PTR);

inline constexpr UINT TIME_PERIODIC = 1;

// Requests a timer resolution of so many milliseconds. Timers here always wake to the millisecond, so there
// is nothing to do.
inline UINT timeBeginPeriod(UINT) {
    return 0;
}
inline UINT timeEndPeriod(UINT) {
    return 0;
}

// Starts a periodic timer: call k comes at start + k * period milliseconds on a thread of the timer's own.
// Deadlines are absolute; a call that is overdue by a whole period is dropped and never made up. Identifiers
// are never 0 and never reused; 0 means that the timer could not be started (period 0, no thread left).
// Only TIME_PERIODIC is supported.
MMTIMERID timeSetEvent(UINT period, UINT resolution, TIMECALLBACK callback, DWORD_PTR user, UINT flags);

// Addition: the same, with its first call after so many milliseconds (0: at once) and the others at whole
// periods from that one. So a timer that was ended within a period goes on where it was.
MMTIMERID timeSetEventAfter(UINT delay, UINT period, UINT resolution, TIMECALLBACK callback, DWORD_PTR user,
                            UINT flags);

// Ends a timer. Difference from the framework: returns only when the callback is not running and will not
// run again. Not to be called from the callback. Unknown identifiers are ignored.
UINT timeKillEvent(MMTIMERID timer);
