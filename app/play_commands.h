// What the commands of the Play menu come to.
#pragma once

#include <algorithm>
#include <cstdint>

#include "platform/framework/wintypes.h"

// A volume a twentieth of its range louder or quieter, within the range.
constexpr DWORD SteppedVolume(DWORD dwVolume, DWORD dwLowest, DWORD dwHighest, bool bLouder) {
    const std::int64_t step = std::max<std::int64_t>((std::int64_t{dwHighest} - dwLowest + 10) / 20, 1);
    const std::int64_t wanted = bLouder ? dwVolume + step : dwVolume - step;
    return static_cast<DWORD>(std::clamp<std::int64_t>(wanted, dwLowest, std::max(dwLowest, dwHighest)));
}
