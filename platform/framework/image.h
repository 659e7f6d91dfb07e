// SPDX-License-Identifier: MIT
// A picture held in memory: what icons, cursors and bitmaps of the resources are decoded to.
#pragma once

#include <cstdint>
#include <vector>

// Pixels are 0xAARRGGBB with straight (not premultiplied) alpha, rows from the top down, width × height of
// them without gaps. A picture without pixels has width and height 0.
struct Image {
    int width = 0;
    int height = 0;
    std::vector<std::uint32_t> pixels;
    // Cursors: the hot spot of the cursor. Icons: the centre. Bitmaps: 0, 0.
    int hotX = 0;
    int hotY = 0;
};
