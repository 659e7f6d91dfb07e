// SPDX-License-Identifier: MIT
#include "platform/framework/surface.h"

#include <cstdlib>
#include <cstring>

namespace {

constexpr std::uint32_t kOpaque = 0xFF000000U;

std::uint32_t FromColorRef(COLORREF color) {
    return kOpaque | static_cast<std::uint32_t>(GetRValue(color)) << 16U |
           static_cast<std::uint32_t>(GetGValue(color)) << 8U | GetBValue(color);
}

std::uint32_t FromDib(const std::uint8_t* pixel) {
    return kOpaque | static_cast<std::uint32_t>(pixel[2]) << 16U |
           static_cast<std::uint32_t>(pixel[1]) << 8U | pixel[0];
}

// Four pixels from three words, on a little-endian machine.
void CopyDibRow(const std::uint8_t* from, std::uint32_t* to, int width) {
    for (; width >= 4; width -= 4, from += 12, to += 4) {
        std::uint32_t words[3];
        std::memcpy(words, from, sizeof words);
        to[0] = kOpaque | words[0];
        to[1] = kOpaque | words[0] >> 24U | words[1] << 8U;
        to[2] = kOpaque | words[1] >> 16U | words[2] << 16U;
        to[3] = kOpaque | words[2] >> 8U;
    }
    for (; width > 0; --width, from += 3) *to++ = FromDib(from);
}

std::size_t Area(int width, int height) {
    return static_cast<std::size_t>(std::max(width, 0)) * static_cast<std::size_t>(std::max(height, 0));
}

CRect Intersection(const RECT& a, const RECT& b) {
    CRect result;
    result.IntersectRect(&a, &b);
    return result;
}

}  // namespace

Surface::Surface(int width, int height, SurfaceScale scale)
    : m_width(std::max(width, 0)),
      m_height(std::max(height, 0)),
      m_scale(scale),
      m_pixels(Area(width, height)),
      m_stretched(scale == SurfaceScale() ? 0 : Area(width, 2)),
      m_dib(0) {}

Surface::Surface(DibTag, int width, int height)
    : m_width(width), m_height(height), m_isDib(true), m_pixels(0), m_dib(Area(dibStride(), height)) {}

std::uint32_t Surface::ReadPixel(int x, int y) const {
    if (!isDib()) return Pixels()[Index(x, y)];
    return FromDib(DibPixel(x, y));
}

COLORREF Surface::pixel(int x, int y) const {
    const std::scoped_lock lock(m_mutex);
    if (x < 0 || y < 0 || x >= m_width || y >= m_height) return 0;
    const std::uint32_t p = ReadPixel(x, y);
    return RGB(p >> 16U, p >> 8U, p);
}

void Surface::AddDamage(const RECT& area) {
    if (m_damage.IsRectEmpty()) {
        m_damage = area;
        return;
    }
    m_damage = CRect(std::min(m_damage.left, area.left), std::min(m_damage.top, area.top),
                     std::max(m_damage.right, area.right), std::max(m_damage.bottom, area.bottom));
}

CRect Surface::TakeDamage() {
    const std::scoped_lock lock(m_mutex);
    const CRect damage = m_damage;
    m_damage = CRect();
    return damage;
}

void Surface::Fill(const RECT& area, COLORREF color, const RECT& clip) {
    const CRect inside = Intersection(Intersection(area, clip), Bounds());
    if (inside.IsRectEmpty() || isDib()) return;
    const std::uint32_t value = FromColorRef(color);
    const std::scoped_lock lock(m_mutex);
    AddDamage(inside);
    if (inside == Bounds()) m_plain = value;
    if (m_plain == value) return;
    for (int y = inside.top; y < inside.bottom; ++y)
        std::fill_n(Pixels() + Index(inside.left, y), inside.Width(), value);
}

void Surface::Line(POINT from, POINT to, COLORREF color, const RECT& clip) {
    const CRect inside = Intersection(clip, Bounds());
    if (inside.IsRectEmpty() || isDib()) return;
    const std::uint32_t value = FromColorRef(color);
    const int dx = std::abs(to.x - from.x);
    const int dy = -std::abs(to.y - from.y);
    const int stepX = from.x < to.x ? 1 : -1;
    const int stepY = from.y < to.y ? 1 : -1;
    int error = dx + dy;
    POINT at = from;
    const std::scoped_lock lock(m_mutex);
    while (at.x != to.x || at.y != to.y) {
        if (inside.PtInRect(at) != FALSE) Pixels()[Index(at.x, at.y)] = value;
        const int doubled = 2 * error;
        if (doubled >= dy) {
            error += dy;
            at.x += stepX;
        }
        if (doubled <= dx) {
            error += dx;
            at.y += stepY;
        }
    }
    const CRect touched = Intersection(CRect(std::min(from.x, to.x), std::min(from.y, to.y),
                                             std::max(from.x, to.x) + 1, std::max(from.y, to.y) + 1),
                                       inside);
    if (touched.IsRectEmpty() == FALSE) AddDamage(touched);
}

void Surface::Copy(const RECT& area, Surface& source, int sx, int sy, Raster raster, const RECT& clip) {
    CRect inside = Intersection(Intersection(area, clip), Bounds());
    // Where the source has no pixels the target keeps its own.
    const int shiftX = sx - area.left;
    const int shiftY = sy - area.top;
    CRect available = source.Bounds();
    available.OffsetRect(-shiftX, -shiftY);
    inside = Intersection(inside, available);
    if (inside.IsRectEmpty() || isDib()) return;

    std::unique_lock own(m_mutex, std::defer_lock);
    std::unique_lock other(source.m_mutex, std::defer_lock);
    if (&source == this)
        own.lock();
    else
        std::lock(own, other);

    // Rows go in the order that keeps an overlapping source unharmed.
    const bool upward = &source == this && shiftY < 0;
    for (int row = 0; row < inside.Height(); ++row) {
        const int y = upward ? inside.bottom - 1 - row : inside.top + row;
        std::uint32_t* to = Pixels() + static_cast<std::ptrdiff_t>(y) * m_width + inside.left;
        const int width = inside.Width();
        const int fromX = inside.left + shiftX;
        const int fromY = y + shiftY;
        if (source.isDib()) {
            const std::uint8_t* p = source.DibPixel(fromX, fromY);
            if (raster == Raster::kCopy) {
                CopyDibRow(p, to, width);
                continue;
            }
            for (int i = 0; i < width; ++i, p += 3) to[i] |= FromDib(p);
            continue;
        }
        const std::uint32_t* from =
            source.Pixels() + static_cast<std::ptrdiff_t>(fromY) * source.m_width + fromX;
        if (raster == Raster::kCopy) {
            std::memmove(to, from, static_cast<std::size_t>(width) * sizeof *to);
            continue;
        }
        for (int i = 0; i < width; ++i) to[i] |= from[i];
    }
    AddDamage(inside);
}

void Surface::Blend(int x, int y, const std::uint32_t* image, int width, int height, const RECT& clip) {
    const CRect inside = Intersection(Intersection(CRect(x, y, x + width, y + height), clip), Bounds());
    if (inside.IsRectEmpty() || isDib()) return;
    const std::scoped_lock lock(m_mutex);
    for (int row = inside.top; row < inside.bottom; ++row) {
        for (int column = inside.left; column < inside.right; ++column) {
            const std::uint32_t over = image[static_cast<std::ptrdiff_t>(row - y) * width + (column - x)];
            std::uint32_t& under = Pixels()[Index(column, row)];
            const std::uint32_t alpha = over >> 24U;
            std::uint32_t mixed = kOpaque;
            for (unsigned shift = 0; shift <= 16; shift += 8) {
                const std::uint32_t o = over >> shift & 0xFFU;
                const std::uint32_t u = under >> shift & 0xFFU;
                mixed |= (o * alpha + u * (255U - alpha) + 127U) / 255U << shift;
            }
            under = mixed;
        }
    }
    AddDamage(inside);
}
