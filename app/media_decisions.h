// SPDX-License-Identifier: MIT
// What the desktop's media controls come to. Times are microseconds, as other programs pass them: of any
// value.
#pragma once

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <optional>

#include "audio/play_speed.h"
#include "platform/framework/wintypes.h"
#include "platform/shell/media_controls.h"
#include "playback/panel_state.h"
#include "res/resource.h"

inline constexpr std::int64_t kFrameMicroseconds = 20000;

constexpr MediaStatus MediaStatusOf(PanelState state) {
    if (IsPlaying(state)) return MediaStatus::Playing;
    return state == PanelState::Paused ? MediaStatus::Paused : MediaStatus::Stopped;
}

// Where a step from a frame leads; nothing: beyond the message's end.
constexpr std::optional<int> FrameAfterStep(std::int64_t nOffset, int nPosition, int nLength) {
    // A message's length in frames is an int, so what lies further off is beyond either end.
    constexpr std::int64_t kBeyond = std::int64_t{1} << 33;
    const std::int64_t nFrame = nPosition + std::clamp(nOffset / kFrameMicroseconds, -kBeyond, kBeyond);
    if (nFrame >= nLength && nOffset > 0) return std::nullopt;
    return static_cast<int>(std::clamp<std::int64_t>(nFrame, 0, std::max(nLength - 1, 0)));
}

// The frame of a position; nothing for one that the message does not have.
constexpr std::optional<int> FrameOfPosition(std::int64_t nPosition, int nLength) {
    if (nPosition < 0 || nPosition > nLength * kFrameMicroseconds) return std::nullopt;
    return static_cast<int>(nPosition / kFrameMicroseconds);
}

// The command that a request for another state comes to; 0: none.
constexpr UINT CommandFor(MediaCommand command, MediaStatus status) {
    const bool bPlaying = status == MediaStatus::Playing;
    switch (command) {
        case MediaCommand::PlayPause:
            return ID_PLAY_PLAYPAUSE;
        case MediaCommand::Play:
            return bPlaying ? 0 : ID_PLAY_PLAYPAUSE;
        case MediaCommand::Pause:
            return bPlaying ? ID_PLAY_PLAYPAUSE : 0;
        case MediaCommand::Stop:
            return ID_PLAY_STOP;
        default:
            return 0;
    }
}

constexpr double RateOfSpeed(int nSpeed) {
    return nSpeed / static_cast<double>(kNormalSpeed);
}

// The nearest speed to a rate, however far away.
constexpr int SpeedForRate(double fRate) {
    const double fWanted =
        std::clamp(fRate, RateOfSpeed(*std::begin(kSpeeds)), RateOfSpeed(*std::rbegin(kSpeeds)));
    const auto fDistance = [=](int nSpeed) {
        const double fAway = RateOfSpeed(nSpeed) - fWanted;
        return fAway < 0 ? -fAway : fAway;
    };
    return *std::min_element(std::begin(kSpeeds), std::end(kSpeeds),
                             [&](int a, int b) { return fDistance(a) < fDistance(b); });
}
