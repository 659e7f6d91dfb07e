// SPDX-License-Identifier: MIT
#include "tools/export/time_range.h"

#include <algorithm>
#include <charconv>

#include "codec/message_time.h"

namespace tools {
namespace {

constexpr int64_t kMostHours = 366 * 24;

std::optional<int64_t> ParseDigits(std::string_view text) {
    const bool digits =
        std::all_of(text.begin(), text.end(), [](char letter) { return letter >= '0' && letter <= '9'; });
    int64_t value = 0;
    if (!digits || std::from_chars(text.data(), text.data() + text.size(), value).ec != std::errc{})
        return std::nullopt;
    return value;
}

// Thousandths from the digits behind a point.
std::optional<int64_t> ParseFraction(std::string_view text) {
    std::optional<int64_t> value = text.size() <= 3 ? ParseDigits(text) : std::nullopt;
    for (std::size_t digits = text.size(); value && digits < 3; ++digits) *value *= 10;
    return value;
}

}  // namespace

std::optional<int64_t> ParseTime(std::string_view text) {
    int64_t milliseconds = 0;
    if (const auto point = text.find('.'); point != std::string_view::npos) {
        const auto fraction = ParseFraction(text.substr(point + 1));
        if (!fraction) return std::nullopt;
        milliseconds = *fraction;
        text = text.substr(0, point);
    }
    constexpr int64_t kUnits[] = {1000, 60 * 1000, 60 * 60 * 1000};
    for (const int64_t unit : kUnits) {
        const auto colon = unit == kUnits[2] ? std::string_view::npos : text.rfind(':');
        const bool more = colon != std::string_view::npos;
        const auto value = ParseDigits(more ? text.substr(colon + 1) : text);
        if (!value || *value > kMostHours * 3600 || (more && *value >= 60)) return std::nullopt;
        milliseconds += *value * unit;
        if (!more) break;
        text = text.substr(0, colon);
    }
    if (milliseconds > kMostHours * kUnits[2]) return std::nullopt;
    return (milliseconds + kFrameMilliseconds / 2) / kFrameMilliseconds;
}

}  // namespace tools
