// SPDX-License-Identifier: MIT
#include "platform/framework/afxgdi.h"
#include "platform/framework/surface.h"
#include "platform/framework/unsupported.h"

namespace {

constexpr std::int64_t kLargestBitmap = 64LL << 20;  // bytes

// Absurd sizes are refused before memory is asked for.
bool SaneSize(int width, int height) {
    return width > 0 && height > 0 && static_cast<std::int64_t>(width) * height * 4 <= kLargestBitmap;
}

// The latest bitmap for a window's context. A window that paints through one needs the same one again each
// time; new ones would cost it as much as all of its drawing.
std::shared_ptr<Surface> g_latest;

}  // namespace

HBITMAP CreateDIBSection(const BITMAPINFOHEADER* header, UINT usage, void** bits) {
    *bits = nullptr;
    if (usage != DIB_RGB_COLORS || header->biSize != sizeof *header || header->biPlanes != 1 ||
        header->biBitCount != 24 || header->biCompression != BI_RGB ||
        !SaneSize(header->biWidth, header->biHeight))
        return nullptr;
    // The handle is the bitmap until a CBitmap takes it over.
    auto* surface = new Surface(Surface::DibTag(), header->biWidth, header->biHeight);
    *bits = surface->dibBits();
    return surface;
}

BOOL CPen::CreatePen(int style, int width, COLORREF color) {
    if (style != PS_SOLID || width < 0 || width > 1)
        Unsupported("pen of width", static_cast<unsigned long>(width));
    m_color = color;
    return TRUE;
}

BOOL CPen::DeleteObject() {
    m_color = 0;
    return TRUE;
}

BOOL CBitmap::CreateCompatibleBitmap(CDC* dc, int width, int height) {
    const SurfaceScale scale = dc == nullptr ? SurfaceScale() : dc->Scale();
    // One pixel more than needed wherever the rounding of an area's two ends may take it.
    const CPoint size = scale.Device(width, height);
    const int more = scale == SurfaceScale() ? 0 : 1;
    if (!SaneSize(width, height) || !SaneSize(size.x + more, size.y + more)) return FALSE;
    const bool again = dc != nullptr && g_latest.use_count() == 1 && g_latest->width() == size.x + more &&
                       g_latest->height() == size.y + more && g_latest->scale() == scale;
    m_pixels = again ? g_latest : std::make_shared<Surface>(size.x + more, size.y + more, scale);
    if (dc != nullptr) g_latest = m_pixels;
    return TRUE;
}

BOOL CBitmap::Attach(HBITMAP bitmap) {
    if (bitmap == nullptr) return FALSE;
    m_pixels.reset(bitmap);
    return TRUE;
}

BOOL CBitmap::DeleteObject() {
    const bool had = m_pixels != nullptr;
    m_pixels.reset();
    return had ? TRUE : FALSE;
}
