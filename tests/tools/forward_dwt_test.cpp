#include "tools/encode/forward_dwt.h"

#include <gtest/gtest.h>

#include <array>
#include <random>
#include <vector>

#include "tests/codec/vdec_reference.h"

// The decoder's reference implementation takes the planes back to what was analysed, but for its floats. Only
// one transform has that inverse.
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
