// SPDX-License-Identifier: MIT
// The speeds at which a message can be played. Pure. A speed is a percentage of the message's own.
#pragma once

#include <algorithm>
#include <cstdint>
#include <iterator>

inline constexpr int kNormalSpeed = 100;
inline constexpr int kSpeeds[] = {50, 75, 100, 125, 150, 175, 200, 250, 300};

// The speed so many steps faster, or slower, than one of them; the last one at either end.
constexpr int SteppedSpeed(int nSpeed, int nSteps) {
    const auto nLast = static_cast<std::int64_t>(std::size(kSpeeds)) - 1;
    const auto nAt = std::lower_bound(std::begin(kSpeeds), std::end(kSpeeds), nSpeed) - std::begin(kSpeeds);
    return kSpeeds[std::clamp<std::int64_t>(nAt + nSteps, 0, nLast)];
}

// How many samples of the message a block of nBlock played samples stands for, when nLeft are left of it.
constexpr int SamplesInBlock(int nBlock, int nSpeed, std::int64_t nLeft) {
    return static_cast<int>(std::min<std::int64_t>(nBlock * nSpeed / kNormalSpeed, nLeft));
}

// How many samples are played for so many of the message.
constexpr int PlayedSamples(int nSamples, int nSpeed) {
    return (nSamples * kNormalSpeed + nSpeed - 1) / nSpeed;
}
