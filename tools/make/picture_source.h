// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "codec/picture_geometry.h"

namespace tools {

// Reads an image of any format that Qt reads and scales it to fit 320 × 240, its aspect kept, centred on
// black. Turns it as its camera says, takes its colours to sRGB, puts what is transparent on black. Gives
// rows of B, G, R bytes, the bottom row first, as messages hold pictures. Throws ToolError naming the file.
void LoadPicture(const std::string& path, std::span<uint8_t, kPictureBytes> bgr);

}  // namespace tools
