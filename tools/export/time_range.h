// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <limits>
#include <optional>
#include <string_view>

namespace tools {

// A stretch of a message, in frames of 20 ms from its start: `from` is in it, `to` is not. As it stands: all
// of it.
struct TimeRange {
    int64_t from = 0;
    int64_t to = std::numeric_limits<int32_t>::max();

    bool IsWhole() const { return from == 0 && to == TimeRange().to; }
};

// Reads "h:mm:ss.cc" as the nearest frame. Hours, minutes and the fraction (up to three digits) may be
// missing. Nothing when it is no time, or one beyond a year.
std::optional<int64_t> ParseTime(std::string_view text);

}  // namespace tools
