// SPDX-License-Identifier: MIT
// Icons, cursors and bitmaps: device-independent bitmaps, alone or chosen from a group.
#include <algorithm>
#include <array>
#include <string>

#include "platform/framework/native.h"
#include "platform/framework/resources.h"
#include "platform/framework/resources_reader.h"
#include "platform/framework/unsupported.h"

namespace resources {
namespace {

constexpr std::uint32_t kOpaque = 0xFF000000U;
constexpr std::uint32_t kHeaderSize = 40;
constexpr int kMostPixels = 4096;  // of a side

// A device-independent bitmap; its rows go from the bottom up.
struct Dib {
    int width = 0;
    int height = 0;
    unsigned bits = 0;
    std::array<std::uint32_t, 256> palette{};
    std::span<const std::uint8_t> colours;  // height rows of RowBytes(width, bits)
    std::span<const std::uint8_t> mask;     // icons and cursors: height rows of RowBytes(width, 1)
};

std::size_t RowBytes(int width, unsigned bits) {
    return (static_cast<std::size_t>(width) * bits + 31) / 32 * 4;
}

// With a mask the header's height covers both halves, the colours and the mask below them.
Dib ReadDib(std::span<const std::uint8_t> data, bool withMask) {
    Reader reader(data);
    Dib dib;
    if (const std::uint32_t size = reader.U32(); size != kHeaderSize) Unsupported("bitmap header", size);
    dib.width = reader.I32();
    dib.height = reader.I32() / (withMask ? 2 : 1);
    if (dib.width < 1 || dib.width > kMostPixels || dib.height < 1 || dib.height > kMostPixels)
        Unsupported("size of a bitmap", std::to_string(dib.width) + " x " + std::to_string(dib.height));
    reader.Skip(2);  // planes
    dib.bits = reader.U16();
    if (reader.U32() != 0) Unsupported("bitmap", "with compression");
    reader.Skip(12);  // picture size, resolution
    std::size_t used = reader.U32();
    reader.Skip(4);  // important colours
    if (dib.bits != 4 && dib.bits != 8 && dib.bits != 24 && dib.bits != 32)
        Unsupported("bits of a bitmap's pixel", dib.bits);
    if (dib.bits <= 8 && used == 0) used = std::size_t{1} << dib.bits;
    if (used > dib.palette.size()) Unsupported("palette of a bitmap", used);
    for (std::size_t i = 0; i < used; ++i) dib.palette[i] = kOpaque | reader.U32();
    const auto rows = static_cast<std::size_t>(dib.height);
    dib.colours = reader.Bytes(rows * RowBytes(dib.width, dib.bits));
    if (withMask) dib.mask = reader.Bytes(rows * RowBytes(dib.width, 1));
    return dib;
}

std::uint32_t Pixel(const Dib& dib, std::span<const std::uint8_t> row, std::size_t x) {
    const unsigned shift = x % 2 == 0 ? 4 : 0;
    if (dib.bits == 4) return dib.palette[static_cast<unsigned>(row[x / 2]) >> shift & 15U];
    if (dib.bits == 8) return dib.palette[row[x]];
    const std::size_t step = dib.bits / 8;
    const std::uint8_t* p = row.subspan(x * step, step).data();
    const std::uint32_t alpha = step == 4 ? static_cast<std::uint32_t>(p[3]) << 24U : kOpaque;
    return alpha | static_cast<std::uint32_t>(p[2]) << 16U | static_cast<std::uint32_t>(p[1]) << 8U | p[0];
}

// The mask decides what is transparent, unless the picture brings an alpha channel of its own. Without a mask
// all is opaque.
Image Decode(const Dib& dib) {
    Image image;
    image.width = dib.width;
    image.height = dib.height;
    std::vector<bool> masked;
    for (int y = dib.height - 1; y >= 0; --y) {
        const auto line = static_cast<std::size_t>(y);
        for (std::size_t x = 0; x < static_cast<std::size_t>(dib.width); ++x) {
            image.pixels.push_back(Pixel(dib, dib.colours.subspan(line * RowBytes(dib.width, dib.bits)), x));
            masked.push_back(!dib.mask.empty() &&
                             (dib.mask[line * RowBytes(dib.width, 1) + x / 8] >> (7 - x % 8) & 1) != 0);
        }
    }
    const bool hasAlpha = dib.bits == 32 && !dib.mask.empty() &&
                          std::any_of(image.pixels.begin(), image.pixels.end(),
                                      [](std::uint32_t pixel) { return (pixel & kOpaque) != 0; });
    for (std::size_t i = 0; !hasAlpha && i < image.pixels.size(); ++i)
        image.pixels[i] = masked[i] ? 0 : image.pixels[i] | kOpaque;
    return image;
}

bool IsPng(std::span<const std::uint8_t> picture) {
    constexpr std::uint32_t kSignature = 0x474E5089U;
    return picture.size() >= 24 && Reader(picture).U32() == kSignature;
}

// 0 for a picture that cannot be decoded: a compressed one is the toolkit's.
int WidthOf(std::span<const std::uint8_t> picture) {
    Reader reader(picture);
    if (!IsPng(picture)) {
        reader.Skip(4);
        return reader.I32();
    }
    return Toolkit() == nullptr ? 0 : picture[18] << 8 | picture[19];
}

// The group's own figures are not needed: each picture's header has them.
std::optional<Image> LoadBest(unsigned groupType, unsigned id, int size) {
    const auto group = Find(groupType, id);
    if (!group) return std::nullopt;
    const bool cursor = groupType == kGroupCursor;
    // Widths that fit come before those that do not, the nearest first.
    const auto rank = [size](int width) { return width >= size ? width : 0x10000 - width; };
    std::span<const std::uint8_t> best;
    int hotX = 0;
    int hotY = 0;
    Reader reader(*group);
    reader.Skip(4);
    for (unsigned left = reader.U16(); left > 0; --left) {
        reader.Skip(12);
        const auto data = Find(cursor ? kCursor : kIcon, reader.U16());
        if (!data) continue;
        Reader picture(*data);
        const int x = cursor ? picture.I16() : 0;
        const int y = cursor ? picture.I16() : 0;
        const auto bitmap = picture.Bytes(picture.Left());
        const int width = WidthOf(bitmap);
        if (width <= 0 || (!best.empty() && rank(WidthOf(best)) <= rank(width))) continue;
        best = bitmap;
        hotX = x;
        hotY = y;
    }
    if (best.empty()) return std::nullopt;
    std::optional<Image> image = IsPng(best) ? Toolkit()->DecodePng(best) : Decode(ReadDib(best, true));
    if (!image.has_value()) return std::nullopt;
    image->hotX = cursor ? hotX : image->width / 2;
    image->hotY = cursor ? hotY : image->height / 2;
    return image;
}

}  // namespace

std::optional<Image> LoadIcon(unsigned id, int size) {
    return LoadBest(kGroupIcon, id, size);
}

std::optional<Image> LoadCursor(unsigned id, int size) {
    return LoadBest(kGroupCursor, id, size);
}

Image LoadBitmap(unsigned id) {
    const auto data = Find(kBitmap, id);
    if (!data) Unsupported("bitmap", id);
    return Decode(ReadDib(*data, false));
}

}  // namespace resources
