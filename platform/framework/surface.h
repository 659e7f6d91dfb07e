// SPDX-License-Identifier: MIT
// A retained picture: what every window shows and what every memory context draws on.
//
// One lock guards the pixels; each drawing operation takes it for its own length. Any thread may draw; the
// toolkit takes the lock while it copies the picture to the screen.
#pragma once

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <new>
#include <optional>
#include <span>
#include <vector>

#include "platform/framework/afxtypes.h"
#include "platform/framework/surface_scale.h"

// Zeros that take no memory until they are written: a window that is never shown is never drawn on.
template <class T>
class Zeros {
public:
    explicit Zeros(std::size_t count) : m_data(static_cast<T*>(std::calloc(count + 1, sizeof(T)))) {
        if (m_data == nullptr) throw std::bad_alloc();
    }
    T* data() const { return m_data.get(); }

private:
    struct Free {
        void operator()(T* data) const { std::free(data); }
    };
    std::unique_ptr<T, Free> m_data;
};

class Surface {
public:
    // 32-bit pixels 0x??RRGGBB, row 0 on top, all black. The size is in device pixels; a negative one counts
    // as 0.
    Surface(int width, int height, SurfaceScale scale = {});

    // 24-bit pixels B, G, R in bottom-up rows padded to four bytes, the layout of a device-independent
    // bitmap, all black; the pixels lie at dibBits() for the caller to write. Positive sizes only.
    struct DibTag {};
    Surface(DibTag, int width, int height);

    int width() const { return m_width; }
    int height() const { return m_height; }
    const SurfaceScale& scale() const { return m_scale; }
    bool isDib() const { return m_isDib; }
    // Pixels of a 32-bit surface, row after row without gaps; hold mutex() while reading.
    const std::uint32_t* pixels() const { return Pixels(); }
    // Of a surface that was last filled as a whole, its colour as a pixel; most are never drawn on otherwise.
    // Hold mutex().
    std::optional<std::uint32_t> plain() const { return m_plain; }
    std::uint8_t* dibBits() { return m_dib.data(); }
    int dibStride() const { return (m_width * 3 + 3) & ~3; }
    std::mutex& mutex() const { return m_mutex; }

    // A pixel as COLORREF (0 outside).
    COLORREF pixel(int x, int y) const;

    // The drawing operations, in device pixels; every area is cut to the clip and the surface. Surfaces that
    // are DIBs serve as sources only.
    void Fill(const RECT& area, COLORREF color, const RECT& clip);
    // A one-pixel line that leaves out its end point (Bresenham's algorithm).
    void Line(POINT from, POINT to, COLORREF color, const RECT& clip);
    enum class Raster { kCopy, kOr };
    // Copies from (sx, sy) of the source, which may be this surface with an overlapping area.
    void Copy(const RECT& area, Surface& source, int sx, int sy, Raster raster, const RECT& clip);
    // Fills the area with a part of another surface, smoothly (bilinear). A part that is not wholly inside
    // the source draws nothing. Allocates nothing.
    void Stretch(const RECT& area, Surface& source, const RECT& from, const RECT& clip);
    // Blends straight-alpha 0xAARRGGBB pixels (width x height, row 0 on top) over the surface.
    void Blend(int x, int y, const std::uint32_t* image, int width, int height, const RECT& clip);

    // What has changed since the last call, for the toolkit to show. Any thread.
    CRect TakeDamage();
    // Lets the toolkit paint into the pixels under the lock (text, icons drawn by it), then counts the area
    // as changed.
    template <class Painter>
    void Paint(const RECT& area, Painter&& painter) {
        const std::scoped_lock lock(m_mutex);
        painter(Pixels());
        AddDamage(area);
    }

private:
    void AddDamage(const RECT& area);
    // Row y of a source as it is under the columns of the area from left on.
    static void StretchRow(const Surface& source, const CRect& from, int y, const CRect& area, int left,
                           std::span<std::uint32_t> to);
    // Written with the plain colour first, where there is one.
    std::uint32_t* Pixels() const {
        if (m_plain.has_value()) std::fill_n(m_pixels.data(), Index(0, m_height), *m_plain);
        m_plain.reset();
        return m_pixels.data();
    }
    CRect Bounds() const { return CRect(0, 0, m_width, m_height); }
    std::uint32_t ReadPixel(int x, int y) const;
    // Where a pixel inside the picture lies; y counts from the top in both layouts.
    std::size_t Index(int x, int y) const {
        return static_cast<std::size_t>(y) * static_cast<std::size_t>(m_width) + static_cast<std::size_t>(x);
    }
    const std::uint8_t* DibPixel(int x, int y) const {
        return m_dib.data() + static_cast<std::ptrdiff_t>(m_height - 1 - y) * dibStride() +
               static_cast<std::ptrdiff_t>(x) * 3;
    }

    int m_width;
    int m_height;
    bool m_isDib = false;
    SurfaceScale m_scale;
    Zeros<std::uint32_t> m_pixels;
    mutable std::optional<std::uint32_t> m_plain;  // not written into the pixels, to leave them untouched
    std::vector<std::uint32_t> m_stretched;        // two rows to stretch by; none where nothing is stretched
    Zeros<std::uint8_t> m_dib;
    mutable std::mutex m_mutex;
    CRect m_damage;
};
