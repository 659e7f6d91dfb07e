#include "tools/encode/forward_dwt.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <numbers>
#include <random>
#include <vector>

#include "video/vdec_tables.h"

namespace {

using tools::kPlaneValues;

// The decoder's synthesis of one line, in double precision.
void SynthesiseLine(std::span<double> line) {
    const int length = static_cast<int>(line.size());
    const int half = length / 2;
    std::vector<double> z(line.size());
    for (int k = 0; k < half; ++k) {
        z[static_cast<std::size_t>(2 * k)] = line[static_cast<std::size_t>(k)];
        z[static_cast<std::size_t>(2 * k + 1)] = line[static_cast<std::size_t>(half + k)];
    }
    const auto at = [&](int i) {
        if (i < 0) i = -i;
        if (i >= length) i = 2 * (length - 1) - i;
        return z[static_cast<std::size_t>(i)];
    };
    const auto pair = [&](int centre, int distance) { return at(centre - distance) + at(centre + distance); };
    const SynthTaps& t = synth_taps;
    for (int i = 0; i < length; i += 2) {
        line[static_cast<std::size_t>(i)] =
            t.e0 * at(i) - t.e1 * pair(i, 1) + t.e2 * pair(i, 2) - t.e3 * pair(i, 3);
        line[static_cast<std::size_t>(i + 1)] = t.o0 * at(i + 1) + t.o1 * pair(i + 1, 1) +
                                                t.o2 * pair(i + 1, 2) + t.o3 * pair(i + 1, 3) +
                                                t.o4 * pair(i + 1, 4);
    }
}

void SynthesiseRegion(std::span<double> plane, std::size_t width, std::size_t height) {
    std::vector<double> column(height);
    for (std::size_t x = 0; x < width; ++x) {
        for (std::size_t y = 0; y < height; ++y) column[y] = plane[y * kPictureWidth + x];
        SynthesiseLine(column);
        for (std::size_t y = 0; y < height; ++y) plane[y * kPictureWidth + x] = column[y];
    }
    for (std::size_t y = 0; y < height; ++y) SynthesiseLine(plane.subspan(y * kPictureWidth, width));
}

}  // namespace

TEST(ForwardDwt, LinesOfEveryLengthComeBack) {
    std::mt19937 random(1);
    std::uniform_real_distribution<double> sample(-255, 255);
    for (const std::size_t length : {30U, 40U, 60U, 80U, 120U, 160U, 240U, 320U}) {
        std::vector<double> line(length);
        for (double& value : line) value = sample(random);
        std::vector<double> copy = line;
        tools::AnalyseLine(copy);
        SynthesiseLine(copy);
        for (std::size_t i = 0; i < length; ++i) ASSERT_NEAR(copy[i], line[i], 2e-4) << length << " at " << i;
    }
}

TEST(ForwardDwt, WholePlanesComeBack) {
    std::mt19937 random(2);
    std::uniform_real_distribution<double> sample(-255, 255);
    for (const int levels : {3, 4}) {
        std::vector<double> plane(kPlaneValues);
        for (double& value : plane) value = sample(random);
        const std::vector<double> source = plane;
        tools::ForwardDwt(std::span<double, kPlaneValues>(plane.data(), kPlaneValues), levels);
        for (int level = levels - 1; level >= 0; --level) {
            SynthesiseRegion(plane, static_cast<std::size_t>(level_width[level]),
                             static_cast<std::size_t>(level_height[level]));
        }
        for (std::size_t i = 0; i < kPlaneValues; ++i) ASSERT_NEAR(plane[i], source[i], 1e-3) << i;
    }
}

// Wrong signs or swapped filters can still reconstruct if both directions have them; these cannot.
TEST(ForwardDwt, SeparatesSlowFromFast) {
    std::array<double, 80> flat;
    flat.fill(100);
    tools::AnalyseLine(flat);
    for (std::size_t k = 0; k < 40; ++k) {
        EXPECT_NEAR(flat[k], 100 * std::numbers::sqrt2, 1e-4);
        EXPECT_NEAR(flat[40 + k], 0, 1e-4);
    }

    std::array<double, 80> fastest;
    for (std::size_t i = 0; i < 80; ++i) fastest[i] = i % 2 == 0 ? 100 : -100;
    tools::AnalyseLine(fastest);
    for (std::size_t k = 0; k < 40; ++k) {
        EXPECT_NEAR(fastest[k], 0, 1e-4);
        EXPECT_NEAR(fastest[40 + k], -100 * std::numbers::sqrt2, 1e-4);
    }

    // Four vanishing moments: a cubic has no detail away from the ends.
    std::array<double, 80> cubic;
    for (std::size_t i = 0; i < 80; ++i) cubic[i] = std::pow((static_cast<double>(i) - 40) / 10, 3);
    tools::AnalyseLine(cubic);
    for (std::size_t k = 3; k < 37; ++k) EXPECT_NEAR(cubic[40 + k], 0, 1e-4) << k;
}
