// SPDX-License-Identifier: MIT
#include "tools/encode/colour_planes.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace tools {
namespace {

// The decoder computes B = Y + b·U, G = Y - g·U - h·V and R = Y + r·V.
constexpr double kBlueOfU = 260.0 / 128.0;
constexpr double kGreenOfU = 51.0 / 128.0;
constexpr double kGreenOfV = 74.0 / 128.0;
constexpr double kRedOfV = 146.0 / 128.0;

// Put U = (B - Y) / b and V = (R - Y) / r into the equation of G, and these are the weights of Y.
constexpr double kBlueWeight = kGreenOfU / kBlueOfU;
constexpr double kRedWeight = kGreenOfV / kRedOfV;
constexpr double kWeightSum = 1.0 + kBlueWeight + kRedWeight;

// The decoder cuts each sample toward zero. Half a unit outward makes that a rounding; near zero less, so
// that grey stays grey.
double OutwardHalf(double sample) {
    return sample + std::clamp(sample, -0.5, 0.5);
}

}  // namespace

void SplitColours(std::span<const uint8_t, kPictureBytes> bgr, ColourPlanes& planes) {
    for (std::size_t i = 0; i < kPlaneValues; ++i) {
        const double blue = bgr[3 * i];
        const double green = bgr[3 * i + 1];
        const double red = bgr[3 * i + 2];
        const double luma = (green + kBlueWeight * blue + kRedWeight * red) / kWeightSum;
        const double u = OutwardHalf((blue - luma) / kBlueOfU);
        const double v = OutwardHalf((red - luma) / kRedOfV);
        // The shift that ends each colour sum rounds down, half a unit on average, wherever there is colour.
        const double shift_loss = 0.5 * std::min(1.0, std::max(std::abs(u), std::abs(v)));
        planes.plane[0][i] = luma + 0.5 + shift_loss;
        planes.plane[1][i] = u;
        planes.plane[2][i] = v;
    }
}

}  // namespace tools
