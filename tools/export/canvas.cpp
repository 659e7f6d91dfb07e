// SPDX-License-Identifier: MIT
#include "tools/export/canvas.h"

#include <algorithm>
#include <cstdlib>

#include "codec/picture_geometry.h"

namespace tools {
namespace {

// Letters, five pixels high, rows from the top; a row's left pixel is the highest of `width` bits.
struct Glyph {
    char letter;
    int width;
    std::array<uint8_t, 5> rows;
};
constexpr std::array<Glyph, 20> kGlyphs = {{
    {'0', 3, {7, 5, 5, 5, 7}}, {'1', 3, {2, 6, 2, 2, 7}}, {'2', 3, {7, 1, 7, 4, 7}},
    {'3', 3, {7, 1, 3, 1, 7}}, {'4', 3, {5, 5, 7, 1, 1}}, {'5', 3, {7, 4, 7, 1, 7}},
    {'6', 3, {7, 4, 7, 5, 7}}, {'7', 3, {7, 1, 1, 2, 2}}, {'8', 3, {7, 5, 7, 5, 7}},
    {'9', 3, {7, 5, 7, 1, 7}}, {':', 3, {0, 2, 0, 2, 0}}, {'m', 5, {0, 30, 21, 21, 21}},
    {'i', 1, {1, 0, 1, 1, 1}}, {'n', 3, {0, 6, 5, 5, 5}}, {'s', 3, {0, 3, 6, 3, 6}},
    {'e', 3, {0, 3, 7, 4, 3}}, {'c', 3, {0, 3, 4, 4, 3}}, {',', 2, {0, 0, 0, 1, 2}},
    {'.', 1, {0, 0, 0, 0, 1}}, {' ', 2, {0, 0, 0, 0, 0}},
}};
constexpr int kGlyphHeight = 5;
constexpr int kGap = 1;
constexpr int kMargin = 1;
constexpr int kCanvasHeightPerDot = 48;  // a dot of a glyph grows by a pixel for each of these

const Glyph& GlyphOf(char letter) {
    const auto* const found = std::find_if(kGlyphs.begin(), kGlyphs.end(),
                                           [=](const Glyph& glyph) { return glyph.letter == letter; });
    return found == kGlyphs.end() ? kGlyphs.back() : *found;
}

}  // namespace

Canvas::Canvas(int width, int height)
    : width_(width),
      height_(height),
      pixels_(std::size_t{3} * static_cast<std::size_t>(width) * static_cast<std::size_t>(height)) {}

void Canvas::Fill(const Rect& rect, const Colour& colour) {
    for (int y = std::max(rect.y, 0); y < std::min(rect.y + rect.height, height_); ++y) {
        for (int x = std::max(rect.x, 0); x < std::min(rect.x + rect.width, width_); ++x) {
            std::reverse_copy(colour.begin(), colour.end(),
                              &pixels_[static_cast<std::size_t>(y * width_ + x) * 3]);
        }
    }
}

void Canvas::DrawPicture(std::span<const uint8_t> picture) {
    // A source pixel is `width_` units wide and a target pixel kPictureWidth units, so every overlap is a
    // whole number.
    const auto overlap = [](int source, int source_units, int target, int target_units) {
        return std::min((source + 1) * source_units, (target + 1) * target_units) -
               std::max(source * source_units, target * target_units);
    };
    const uint32_t area = kPictureWidth * kPictureHeight;
    for (int y = 0; y < height_; ++y) {
        for (int x = 0; x < width_; ++x) {
            std::array<uint32_t, 3> sums{};
            for (int sy = y * kPictureHeight / height_; sy * height_ < (y + 1) * kPictureHeight; ++sy) {
                for (int sx = x * kPictureWidth / width_; sx * width_ < (x + 1) * kPictureWidth; ++sx) {
                    const auto weight = static_cast<uint32_t>(overlap(sx, width_, x, kPictureWidth) *
                                                              overlap(sy, height_, y, kPictureHeight));
                    const std::size_t from =
                        static_cast<std::size_t>((kPictureHeight - 1 - sy) * kPictureWidth + sx) * 3;
                    for (std::size_t channel = 0; channel < 3; ++channel) {
                        sums[channel] += weight * picture[from + channel];
                    }
                }
            }
            for (std::size_t channel = 0; channel < 3; ++channel) {
                pixels_[static_cast<std::size_t>(y * width_ + x) * 3 + channel] =
                    static_cast<uint8_t>((sums[channel] + area / 2) / area);
            }
        }
    }
}

int Canvas::TextWidth(std::string_view text) {
    int width = -kGap;
    for (const char letter : text) width += GlyphOf(letter).width + kGap;
    return width;
}

void Canvas::DrawText(std::string_view text, int left, int top, int dot, const Colour& colour) {
    for (const char letter : text) {
        const Glyph& glyph = GlyphOf(letter);
        for (int row = 0; row < kGlyphHeight; ++row) {
            for (int column = 0; column < glyph.width; ++column) {
                const int bits = glyph.rows[static_cast<std::size_t>(row)];
                if ((bits >> (glyph.width - 1 - column) & 1) == 0) continue;
                Fill({left + column * dot, top + row * dot, dot, dot}, colour);
            }
        }
        left += (glyph.width + kGap) * dot;
    }
}

int Canvas::DrawTime(std::string_view text, const Colour& colour) {
    const int dots = TextWidth(text) + 2 * kMargin;
    const int dot = std::min(height_ / kCanvasHeightPerDot, width_ / dots);
    if (dot == 0) return 0;
    DrawText(text, width_ - (dots - kMargin) * dot, height_ - (kGlyphHeight + kMargin) * dot, dot, colour);
    return (kGlyphHeight + 2 * kMargin) * dot;
}

void Canvas::OrLine(Point from, Point to, const Rect& clip, const Colour& colour) {
    const int dx = std::abs(to.x - from.x);
    const int dy = -std::abs(to.y - from.y);
    const int step_x = from.x < to.x ? 1 : -1;
    const int step_y = from.y < to.y ? 1 : -1;
    int error = dx + dy;
    while (from.x != to.x || from.y != to.y) {
        if (from.x >= clip.x && from.x < clip.x + clip.width && from.y >= clip.y &&
            from.y < clip.y + clip.height) {
            uint8_t* const pixel = &pixels_[static_cast<std::size_t>(from.y * width_ + from.x) * 3];
            for (std::size_t i = 0; i < 3; ++i) pixel[i] |= colour[2 - i];
        }
        const int doubled = 2 * error;
        if (doubled >= dy) error += dy, from.x += step_x;
        if (doubled <= dx) error += dx, from.y += step_y;
    }
}

}  // namespace tools
