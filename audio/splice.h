// SPDX-License-Identifier: MIT
// Going over from one sound to another of the same voice without a click. Pure.
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <span>

// Where, within `candidates`, what follows is most like `tail`: the offset of the highest normalised
// correlation, 0 for silence. `candidates` holds the tail's length and as many more samples as there are
// offsets to be tried.
inline std::size_t BestOffset(std::span<const std::int16_t> tail, std::span<const std::int16_t> candidates) {
    std::size_t best = 0;
    double highest = 0;
    for (std::size_t offset = 0; offset + tail.size() <= candidates.size(); ++offset) {
        double product = 0;
        double energy = 0;
        for (std::size_t i = 0; i < tail.size(); ++i) {
            const double there = candidates[offset + i];
            product += there * tail[i];
            energy += there * there;
        }
        if (product <= 0 || product * product <= highest * energy) continue;
        highest = product * product / energy;
        best = offset;
    }
    return best;
}

// Fades from `tail` to `samples`, in place, over the shorter of the two.
inline void Crossfade(std::span<const std::int16_t> tail, std::span<std::int16_t> samples) {
    const std::size_t length = std::min(tail.size(), samples.size());
    for (std::size_t i = 0; i < length; ++i) {
        const double in = static_cast<double>(i) / static_cast<double>(length);
        samples[i] = static_cast<std::int16_t>(std::lround((1 - in) * tail[i] + in * samples[i]));
    }
}
