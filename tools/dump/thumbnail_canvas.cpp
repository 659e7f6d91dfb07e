// SPDX-License-Identifier: MIT
#include "tools/dump/thumbnail_canvas.h"

#include <png.h>

#include <algorithm>
#include <new>

#include "codec/vdec.h"

namespace tools {
namespace {

// The digits and the colon, three pixels by five, rows from the top, the left pixel in the highest bit.
constexpr std::array<std::array<uint8_t, 5>, 11> kGlyphs = {{
    {7, 5, 5, 5, 7},
    {2, 6, 2, 2, 7},
    {7, 1, 7, 4, 7},
    {7, 1, 3, 1, 7},
    {5, 5, 7, 1, 1},
    {7, 4, 7, 1, 7},
    {7, 4, 7, 5, 7},
    {7, 1, 1, 2, 2},
    {7, 5, 7, 5, 7},
    {7, 5, 7, 1, 7},
    {0, 2, 0, 2, 0},
}};
constexpr int kGlyphWidth = 3;
constexpr int kGlyphHeight = 5;
constexpr int kAdvance = kGlyphWidth + 1;
constexpr int kMargin = 1;
constexpr int kCanvasHeightPerDot = 48;  // a dot of a glyph grows by a pixel for each of these

}  // namespace

ThumbnailCanvas::ThumbnailCanvas(int width, int height)
    : width_(width),
      height_(height),
      pixels_(std::size_t{3} * static_cast<std::size_t>(width) * static_cast<std::size_t>(height)) {}

void ThumbnailCanvas::Fill(const Rect& rect, const Colour& colour) {
    for (int y = std::max(rect.y, 0); y < std::min(rect.y + rect.height, height_); ++y) {
        for (int x = std::max(rect.x, 0); x < std::min(rect.x + rect.width, width_); ++x) {
            std::reverse_copy(colour.begin(), colour.end(),
                              &pixels_[static_cast<std::size_t>(y * width_ + x) * 3]);
        }
    }
}

void ThumbnailCanvas::DrawPicture(std::span<const uint8_t> picture) {
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

int ThumbnailCanvas::DrawTime(std::string_view text, const Colour& colour) {
    const int dots = static_cast<int>(text.size()) * kAdvance - 1 + 2 * kMargin;
    const int dot = std::min(height_ / kCanvasHeightPerDot, width_ / dots);
    if (dot == 0) return 0;
    int left = width_ - (dots - kMargin) * dot;
    const int top = height_ - (kGlyphHeight + kMargin) * dot;
    for (const char letter : text) {
        const auto& glyph = kGlyphs[letter == ':' ? 10 : static_cast<std::size_t>(letter - '0')];
        for (int row = 0; row < kGlyphHeight; ++row) {
            for (int column = 0; column < kGlyphWidth; ++column) {
                if ((glyph[static_cast<std::size_t>(row)] >> (kGlyphWidth - 1 - column) & 1) == 0) continue;
                Fill({left + column * dot, top + row * dot, dot, dot}, colour);
            }
        }
        left += kAdvance * dot;
    }
    return (kGlyphHeight + 2 * kMargin) * dot;
}

std::vector<uint8_t> ThumbnailCanvas::EncodePng() const {
    png_image image = {};
    image.version = PNG_IMAGE_VERSION;
    image.width = static_cast<png_uint_32>(width_);
    image.height = static_cast<png_uint_32>(height_);
    image.format = PNG_FORMAT_BGR;
    image.flags = PNG_IMAGE_FLAG_FAST;  // half the time of a thumbnail; a third more bytes
    png_alloc_size_t size = PNG_IMAGE_PNG_SIZE_MAX(image);
    std::vector<uint8_t> png(size);
    if (png_image_write_to_memory(&image, png.data(), &size, 0, pixels_.data(), 0, nullptr) == 0)
        throw std::bad_alloc();
    png.resize(size);
    return png;
}

}  // namespace tools
