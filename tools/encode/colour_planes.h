// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "tools/encode/forward_dwt.h"

namespace tools {

// The Y, U and V samples of a picture, as the decoder's colour conversion expects them: Y from 0 to 255,
// U and V signed around 0.
struct ColourPlanes {
    std::array<std::array<double, kPlaneValues>, 3> plane;
};

// Turns 320 × 240 pixels of B, G, R bytes into Y, U and V with the exact inverse of the decoder's integer
// matrix, moved by what the decoder's truncations take away.
void SplitColours(std::span<const uint8_t, kPictureBytes> bgr, ColourPlanes& planes);

}  // namespace tools
