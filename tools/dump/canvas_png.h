// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <vector>

#include "tools/export/canvas.h"

namespace tools {

// The canvas as a PNG file. Throws std::bad_alloc.
std::vector<uint8_t> EncodePng(const Canvas& canvas);

}  // namespace tools
