// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace tools {

using Colour = std::array<uint8_t, 3>;  // R, G, B

// A small image that a thumbnail is put together on.
class ThumbnailCanvas {
public:
    struct Rect {
        int x, y, width, height;
    };

    ThumbnailCanvas(int width, int height);

    int width() const { return width_; }
    int height() const { return height_; }

    // Fills the part of the rectangle that lies on the canvas.
    void Fill(const Rect& rect, const Colour& colour);
    // Fills the canvas with a decoder's picture (bottom row first, B, G, R), each pixel the mean of the area
    // it covers.
    void DrawPicture(std::span<const uint8_t> picture);
    // Writes digits and colons into the lower right corner, as large as suits the canvas. Returns the height
    // that the text takes with its margins, 0 where there is no room for it.
    int DrawTime(std::string_view text, const Colour& colour);

    // Throws std::bad_alloc.
    std::vector<uint8_t> EncodePng() const;

private:
    int width_;
    int height_;
    std::vector<uint8_t> pixels_;  // rows from the top, B, G, R
};

}  // namespace tools
