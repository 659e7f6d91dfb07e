// SPDX-License-Identifier: MIT
// Stretching a picture over a larger area. Each row of the source is stretched sideways once; the rows of the
// target are mixed from two of those.
#include <mutex>
#include <utility>

#include "platform/framework/surface.h"

namespace {

// Where a pixel of the target falls between two of the source, centre on centre.
struct Tap {
    int first;
    std::uint32_t weight;  // of the pixel after the first, in 256ths
};

class Taps {
public:
    Taps(int length, int sourceLength)
        : m_step((std::int64_t{sourceLength} << kBits) / length), m_last((sourceLength - 1) << kBits) {}
    Tap At(int i) const {
        const auto at = std::clamp<std::int64_t>(i * m_step + (m_step - kOne) / 2, 0, m_last);
        return {static_cast<int>(at >> kBits), static_cast<std::uint32_t>(at >> (kBits - 8) & 0xFF)};
    }

private:
    static constexpr int kBits = 16;
    static constexpr std::int64_t kOne = 1 << kBits;
    std::int64_t m_step;
    std::int64_t m_last;
};

// Two colours of a pixel at a time.
std::uint32_t Mix(std::uint32_t a, std::uint32_t b, std::uint32_t weight) {
    constexpr std::uint32_t kEven = 0x00FF00FFU;
    const std::uint32_t rest = 256U - weight;
    const std::uint32_t even = ((a & kEven) * rest + (b & kEven) * weight) >> 8U & kEven;
    const std::uint32_t odd = ((a >> 8U & kEven) * rest + (b >> 8U & kEven) * weight) & ~kEven;
    return even | odd;
}

}  // namespace

void Surface::StretchRow(const Surface& source, const CRect& from, int y, const CRect& area, int left,
                         std::span<std::uint32_t> to) {
    const Taps taps(area.Width(), from.Width());
    for (std::size_t i = 0; i < to.size(); ++i) {
        const Tap tap = taps.At(left + static_cast<int>(i) - area.left);
        const int x = from.left + tap.first;
        const int after = std::min(x + 1, from.right - 1);
        to[i] = Mix(source.ReadPixel(x, y), source.ReadPixel(after, y), tap.weight);
    }
}

void Surface::Stretch(const RECT& target, Surface& source, const RECT& part, const RECT& clip) {
    const CRect area(target);
    const CRect from(part);
    CRect inside;
    CRect available;
    const CRect whole = Bounds();
    const CRect sourceWhole = source.Bounds();
    available.IntersectRect(&from, &sourceWhole);
    if (inside.IntersectRect(&area, &clip) == FALSE || from.IsRectEmpty() != FALSE || !(available == from) ||
        &source == this || m_stretched.empty())
        return;
    const CRect wanted = inside;
    if (inside.IntersectRect(&wanted, &whole) == FALSE) return;

    const auto width = static_cast<std::size_t>(inside.Width());
    const std::span<std::uint32_t> rows[] = {std::span(m_stretched).first(width),
                                             std::span(m_stretched).last(width)};
    int held[] = {-1, -1};  // which row of the source each is
    const Taps taps(area.Height(), from.Height());
    const std::scoped_lock lock(m_mutex, source.m_mutex);
    for (int y = inside.top; y < inside.bottom; ++y) {
        const Tap tap = taps.At(y - area.top);
        const int row = from.top + tap.first;
        const int after = std::min(row + 1, from.bottom - 1);
        for (const int needed : {row, after}) {
            if (std::exchange(held[needed & 1], needed) == needed) continue;
            StretchRow(source, from, needed, area, inside.left, rows[needed & 1]);
        }
        const std::uint32_t* upper = rows[row & 1].data();
        const std::uint32_t* lower = rows[after & 1].data();
        std::uint32_t* to = Pixels() + Index(inside.left, y);
        for (std::size_t i = 0; i < width; ++i) to[i] = Mix(upper[i], lower[i], tap.weight);
    }
    AddDamage(inside);
}
