// SPDX-License-Identifier: MIT
#include "tools/encode/forward_dwt.h"

#include <array>
#include <cstddef>

#include "codec/vdec_tables.h"

namespace tools {
namespace {

// The decoder's synthesis coefficients, by distance from the centre. The low-pass that analyses is the
// high-pass that synthesises with every second sign turned, and the other way round.
constexpr std::array<double, 5> kLowPass = {synth_taps.o0, synth_taps.e1, synth_taps.o2, synth_taps.e3,
                                            synth_taps.o4};
constexpr std::array<double, 4> kHighPass = {synth_taps.e0, -synth_taps.o1, synth_taps.e2, -synth_taps.o3};

constexpr std::size_t kReach = 4;

}  // namespace

void AnalyseLine(std::span<double> line) {
    std::array<double, kPictureWidth + 2 * kReach> extended;
    const std::size_t length = line.size();
    double* const x = extended.data() + kReach;
    for (std::size_t i = 0; i < length; ++i) x[i] = line[i];
    for (std::size_t i = 1; i <= kReach; ++i) {
        extended[kReach - i] = x[i];
        x[length - 1 + i] = x[length - 1 - i];
    }

    const std::size_t half = length / 2;
    for (std::size_t k = 0; k < half; ++k) {
        const double* const even = x + 2 * k;
        double low = kLowPass[0] * even[0];
        for (std::ptrdiff_t d = 1; d <= 4; ++d)
            low += kLowPass[static_cast<std::size_t>(d)] * (even[d] + even[-d]);

        const double* const odd = even + 1;
        double high = kHighPass[0] * odd[0];
        for (std::ptrdiff_t d = 1; d <= 3; ++d)
            high += kHighPass[static_cast<std::size_t>(d)] * (odd[d] + odd[-d]);

        line[k] = low;
        line[half + k] = high;
    }
}

void AnalyseRegion(std::span<double, kPlaneValues> plane, int width, int height) {
    const auto columns = static_cast<std::size_t>(width);
    const auto rows = static_cast<std::size_t>(height);
    for (std::size_t y = 0; y < rows; ++y) AnalyseLine(plane.subspan(y * kPictureWidth, columns));

    std::array<double, kPictureHeight> column;
    for (std::size_t x = 0; x < columns; ++x) {
        for (std::size_t y = 0; y < rows; ++y) column[y] = plane[y * kPictureWidth + x];
        AnalyseLine(std::span(column).first(rows));
        for (std::size_t y = 0; y < rows; ++y) plane[y * kPictureWidth + x] = column[y];
    }
}

void ForwardDwt(std::span<double, kPlaneValues> plane, int levels) {
    for (int level = 0; level < levels; ++level) AnalyseRegion(plane, LevelWidth(level), LevelHeight(level));
}

}  // namespace tools
