// SPDX-License-Identifier: MIT
// What the commands of the Play menu come to.
#pragma once

#include <algorithm>
#include <cstdint>

#include "platform/framework/wintypes.h"
#include "res/resource.h"

// The frame of 20 ms to which a command that moves in the message leads; at most the message's length.
constexpr int MoveTarget(UINT nCommand, int nPosition, int nLength) {
    constexpr std::int64_t kSecond = 50;
    const std::int64_t tenth = std::max(nLength / 10, 1);
    std::int64_t target = nPosition;
    switch (nCommand) {
        case ID_PLAY_BACK_5:
            target -= 5 * kSecond;
            break;
        case ID_PLAY_ON_5:
            target += 5 * kSecond;
            break;
        case ID_PLAY_BACK_1:
            target -= kSecond;
            break;
        case ID_PLAY_ON_1:
            target += kSecond;
            break;
        case ID_PLAY_BACK_TENTH:
            target -= tenth;
            break;
        case ID_PLAY_ON_TENTH:
            target += tenth;
            break;
        case ID_PLAY_TO_START:
            target = 0;
            break;
        case ID_PLAY_TO_END:
            target = nLength;
            break;
        default:
            break;
    }
    return static_cast<int>(std::clamp<std::int64_t>(target, 0, std::max(nLength, 0)));
}

// A volume a twentieth of its range louder or quieter, within the range.
constexpr DWORD SteppedVolume(DWORD dwVolume, DWORD dwLowest, DWORD dwHighest, bool bLouder) {
    const std::int64_t step = std::max<std::int64_t>((std::int64_t{dwHighest} - dwLowest + 10) / 20, 1);
    const std::int64_t wanted = bLouder ? dwVolume + step : dwVolume - step;
    return static_cast<DWORD>(std::clamp<std::int64_t>(wanted, dwLowest, std::max(dwLowest, dwHighest)));
}

// Where a volume stands within its range, of 1, and the volume that stands there; what lies outside counts as
// the nearer end.
constexpr double VolumeShare(DWORD dwVolume, DWORD dwLowest, DWORD dwHighest) {
    if (dwHighest <= dwLowest) return 1;
    return (std::clamp(dwVolume, dwLowest, dwHighest) - dwLowest) / static_cast<double>(dwHighest - dwLowest);
}

constexpr DWORD VolumeOfShare(double fShare, DWORD dwLowest, DWORD dwHighest) {
    if (dwHighest <= dwLowest) return dwLowest;
    return dwLowest + static_cast<DWORD>(std::clamp(fShare, 0.0, 1.0) * (dwHighest - dwLowest) + 0.5);
}
