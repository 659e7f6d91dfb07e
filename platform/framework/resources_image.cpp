// Icons, cursors and bitmaps: device-independent bitmaps, alone or chosen from a group.
#include <algorithm>
#include <array>
#include <cstdlib>

#include "platform/framework/resources.h"
#include "platform/framework/resources_reader.h"

namespace resources {
namespace {

constexpr std::uint32_t kOpaque = 0xFF000000U;
constexpr int kMaxEdge = 4096;
constexpr std::size_t kHeaderSize = 40;

// A device-independent bitmap, checked to lie wholly inside its resource.
struct Dib {
    int width = 0;
    int height = 0;
    int bits = 0;
    bool top_down = false;
    std::array<std::uint32_t, 256> palette{};
    std::span<const std::uint8_t> colours;  // height rows of RowBytes(width, bits)
    std::span<const std::uint8_t> mask;     // icons and cursors: height rows of RowBytes(width, 1)
};

std::size_t RowBytes(int width, int bits) {
    return (static_cast<std::size_t>(width) * static_cast<std::size_t>(bits) + 31) / 32 * 4;
}

// With a mask the header's height covers both halves, the colours and the mask below them.
std::optional<Dib> ReadDib(std::span<const std::uint8_t> data, bool with_mask) {
    Reader reader(data);
    Dib dib;
    const std::size_t header_size = reader.U32();
    dib.width = reader.I32();
    std::int32_t height = reader.I32();
    reader.Skip(2);  // planes
    dib.bits = reader.U16();
    const std::uint32_t compression = reader.U32();
    reader.Skip(12);  // picture size, resolution
    std::size_t used = reader.U32();
    reader.Skip(4);  // important colours
    if (!reader.Ok() || header_size < kHeaderSize || compression != 0) return std::nullopt;
    reader.Skip(header_size - kHeaderSize);

    dib.top_down = height < 0;
    if (height < -2 * kMaxEdge || height > 2 * kMaxEdge) return std::nullopt;
    height = std::abs(height);
    if (with_mask && height % 2 != 0) return std::nullopt;
    dib.height = with_mask ? height / 2 : height;
    if (dib.width < 1 || dib.width > kMaxEdge || dib.height < 1 || dib.height > kMaxEdge) return std::nullopt;

    const bool indexed = dib.bits == 1 || dib.bits == 4 || dib.bits == 8;
    if (!indexed && dib.bits != 24 && dib.bits != 32) return std::nullopt;
    if (indexed && used == 0) used = std::size_t{1} << static_cast<unsigned>(dib.bits);
    if (used > dib.palette.size()) return std::nullopt;
    dib.palette.fill(kOpaque);
    for (std::size_t i = 0; i < used; ++i) dib.palette[i] = kOpaque | reader.U32();

    const auto rows = static_cast<std::size_t>(dib.height);
    dib.colours = reader.Bytes(rows * RowBytes(dib.width, dib.bits));
    if (with_mask) dib.mask = reader.Bytes(rows * RowBytes(dib.width, 1));
    if (!reader.Ok()) return std::nullopt;
    return dib;
}

// The leftmost pixel is the highest bit.
std::uint32_t BitAt(std::span<const std::uint8_t> row, std::size_t x) {
    return std::uint32_t{row[x / 8]} >> (7 - x % 8) & 1U;
}

std::uint32_t Pixel(const Dib& dib, std::span<const std::uint8_t> row, std::size_t x) {
    switch (dib.bits) {
        case 1:
            return dib.palette[BitAt(row, x)];
        case 4:
            return dib.palette[x % 2 == 0 ? std::uint32_t{row[x / 2]} >> 4U : row[x / 2] & 15U];
        case 8:
            return dib.palette[row[x]];
        default: {
            const std::size_t step = static_cast<std::size_t>(dib.bits) / 8;
            const std::uint8_t* p = row.subspan(x * step, step).data();
            const std::uint32_t alpha = step == 4 ? static_cast<std::uint32_t>(p[3]) << 24U : kOpaque;
            return alpha | static_cast<std::uint32_t>(p[2]) << 16U | static_cast<std::uint32_t>(p[1]) << 8U |
                   p[0];
        }
    }
}

std::span<const std::uint8_t> Row(const Dib& dib, std::span<const std::uint8_t> rows, int bits, int y) {
    const int stored = dib.top_down ? y : dib.height - 1 - y;
    const std::size_t bytes = RowBytes(dib.width, bits);
    return rows.subspan(static_cast<std::size_t>(stored) * bytes, bytes);
}

// Colours only; a fourth byte comes out as alpha.
Image DecodeColours(const Dib& dib) {
    Image image;
    image.width = dib.width;
    image.height = dib.height;
    image.pixels.reserve(static_cast<std::size_t>(dib.width) * static_cast<std::size_t>(dib.height));
    for (int y = 0; y < dib.height; ++y) {
        const auto row = Row(dib, dib.colours, dib.bits, y);
        for (std::size_t x = 0; x < static_cast<std::size_t>(dib.width); ++x)
            image.pixels.push_back(Pixel(dib, row, x));
    }
    return image;
}

// The mask decides what is transparent, unless the picture brings an alpha channel of its own.
Image DecodeMasked(const Dib& dib) {
    Image image = DecodeColours(dib);
    const bool has_alpha =
        dib.bits == 32 && std::any_of(image.pixels.begin(), image.pixels.end(),
                                      [](std::uint32_t pixel) { return (pixel & kOpaque) != 0; });
    if (has_alpha) return image;
    auto pixel = image.pixels.begin();
    for (int y = 0; y < dib.height; ++y) {
        const auto row = Row(dib, dib.mask, 1, y);
        for (std::size_t x = 0; x < static_cast<std::size_t>(dib.width); ++x, ++pixel) {
            const bool transparent = BitAt(row, x) != 0;
            *pixel = transparent ? 0 : *pixel | kOpaque;
        }
    }
    return image;
}

struct Candidate {
    Dib dib;
    int hot_x = 0;
    int hot_y = 0;
};

// The pictures of a group that can be decoded. The group's own figures are not needed: each picture's header
// has them.
std::vector<Candidate> Candidates(unsigned group_type, unsigned id) {
    std::vector<Candidate> candidates;
    const auto group = Find(group_type, id);
    if (!group) return candidates;
    Reader reader(*group);
    reader.Skip(4);
    for (unsigned left = reader.U16(); left > 0; --left) {
        reader.Skip(12);
        const unsigned picture = reader.U16();
        if (!reader.Ok()) break;
        Candidate candidate;
        auto data = Find(group_type == kGroupCursor ? kCursor : kIcon, picture);
        if (!data) continue;
        if (group_type == kGroupCursor) {
            Reader hot(*data);
            candidate.hot_x = hot.I16();
            candidate.hot_y = hot.I16();
            if (!hot.Ok()) continue;
            data = data->subspan(hot.Position());
        }
        const auto dib = ReadDib(*data, true);
        if (!dib) continue;
        candidate.dib = *dib;
        if (group_type == kGroupIcon) {
            candidate.hot_x = dib->width / 2;
            candidate.hot_y = dib->height / 2;
        }
        candidates.push_back(candidate);
    }
    return candidates;
}

std::optional<Image> LoadBest(unsigned group_type, unsigned id, int size) {
    const auto candidates = Candidates(group_type, id);
    const auto best = std::min_element(candidates.begin(), candidates.end(),
                                       [size](const Candidate& a, const Candidate& b) {
                                           const bool a_fits = a.dib.width >= size;
                                           const bool b_fits = b.dib.width >= size;
                                           if (a_fits != b_fits) return a_fits;
                                           if (a.dib.width != b.dib.width)
                                               return a_fits == (a.dib.width < b.dib.width);
                                           return a.dib.bits > b.dib.bits;
                                       });
    if (best == candidates.end()) return std::nullopt;
    Image image = DecodeMasked(best->dib);
    image.hot_x = best->hot_x;
    image.hot_y = best->hot_y;
    return image;
}

}  // namespace

std::vector<int> IconSizes(unsigned id) {
    std::vector<int> sizes;
    for (const Candidate& candidate : Candidates(kGroupIcon, id)) sizes.push_back(candidate.dib.width);
    std::sort(sizes.begin(), sizes.end());
    sizes.erase(std::unique(sizes.begin(), sizes.end()), sizes.end());
    return sizes;
}

std::optional<Image> LoadIcon(unsigned id, int size) {
    return LoadBest(kGroupIcon, id, size);
}

std::optional<Image> LoadCursor(unsigned id, int size) {
    return LoadBest(kGroupCursor, id, size);
}

std::optional<Image> LoadBitmap(unsigned id) {
    const auto data = Find(kBitmap, id);
    if (!data) return std::nullopt;
    const auto dib = ReadDib(*data, false);
    if (!dib) return std::nullopt;
    Image image = DecodeColours(*dib);
    for (std::uint32_t& pixel : image.pixels) pixel |= kOpaque;
    return image;
}

}  // namespace resources
