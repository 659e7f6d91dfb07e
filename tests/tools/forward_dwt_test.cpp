#include "tools/encode/forward_dwt.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <numbers>
#include <random>
#include <vector>

#include "tests/codec/vdec_reference.h"

// The decoder's straightforward form takes the planes back to what was analysed, but for its floats.
TEST(ForwardDwt, WholePlanesComeBack) {
    std::mt19937 random(2);
    std::uniform_real_distribution<double> sample(-255, 255);
    std::array<std::vector<double>, 3> sources;
    ReferencePlanes planes;
    for (std::size_t p = 0; p < 3; ++p) {
        std::vector<double> plane(tools::kPlaneValues);
        for (double& value : plane) value = sample(random);
        sources[p] = plane;
        tools::ForwardDwt(std::span<double, tools::kPlaneValues>(plane.data(), tools::kPlaneValues),
                          p == 0 ? 3 : 4);
        planes.planes[p].assign(plane.begin(), plane.end());
    }
    ReferenceInverseDwt(planes);
    for (std::size_t p = 0; p < 3; ++p) {
        for (std::size_t i = 0; i < tools::kPlaneValues; ++i)
            ASSERT_NEAR(planes.planes[p][i], sources[p][i], 2e-3) << "plane " << p << " at " << i;
    }
}

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
