// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace tools {

using Colour = std::array<uint8_t, 3>;  // R, G, B

// A small image that a thumbnail or a picture of a film is put together on.
class Canvas {
public:
    struct Rect {
        int x, y, width, height;
    };

    Canvas(int width, int height);

    int width() const { return width_; }
    int height() const { return height_; }

    // Fills the part of the rectangle that lies on the canvas.
    void Fill(const Rect& rect, const Colour& colour);
    // Fills the canvas with a decoder's picture (bottom row first, B, G, R), each pixel the mean of the area
    // it covers.
    void DrawPicture(std::span<const uint8_t> picture);
    // Writes digits and the letters of "mins, secs." from a place on, each dot `dot` pixels wide.
    void DrawText(std::string_view text, int left, int top, int dot, const Colour& colour);
    // How many dots wide it is.
    static int TextWidth(std::string_view text);

    // Writes such a text into the lower right corner, as large as suits the canvas. Returns the height
    // that the text takes with its margins, 0 where there is no room for it.
    int DrawTime(std::string_view text, const Colour& colour);

    // Adds a colour's bits to those of a line's pixels, its end point left out, as far as they lie within
    // `clip`.
    struct Point {
        int x, y;
    };
    void OrLine(Point from, Point to, const Rect& clip, const Colour& colour);

    // Rows from the top, B, G, R.
    const std::vector<uint8_t>& pixels() const { return pixels_; }
    // Takes the pixels of one of the same size.
    void CopyFrom(const Canvas& other) { pixels_ = other.pixels_; }

private:
    int width_;
    int height_;
    std::vector<uint8_t> pixels_;  // rows from the top, B, G, R
};

}  // namespace tools
