// SPDX-License-Identifier: MIT
#include "platform/framework/afxgdi.h"

#include <utility>

#include "platform/framework/afxicon.h"
#include "platform/framework/image.h"
#include "platform/framework/native.h"
#include "platform/framework/surface.h"
#include "platform/framework/unsupported.h"
#include "platform/framework/winuser.h"

namespace {

CRect WholeOf(const Surface& surface) {
    return CRect(0, 0, surface.width(), surface.height());
}

}  // namespace

CDC::~CDC() = default;

void CDC::AttachSurface(std::shared_ptr<Surface> surface, const RECT& clip) {
    m_surface = std::move(surface);
    m_scale = m_surface->scale();
    m_clip = clip;
}

// The origin is rounded by itself, so that what is drawn off-screen falls as it would on the target.
CPoint CDC::Device(int x, int y) const {
    const CPoint origin = m_scale.Device(m_origin.x, m_origin.y);
    const CPoint at = m_scale.Device(x, y);
    return CPoint(at.x - origin.x, at.y - origin.y);
}

CRect CDC::Device(const RECT& rect) const {
    return CRect(Device(rect.left, rect.top), Device(rect.right, rect.bottom));
}

BOOL CDC::CreateCompatibleDC(CDC*) {
    if (m_surface != nullptr) return FALSE;
    if (m_firstBitmap.CreateCompatibleBitmap(nullptr, 1, 1) == FALSE) return FALSE;
    m_memory = true;
    m_bitmap = &m_firstBitmap;
    AttachSurface(m_firstBitmap.Pixels(), WholeOf(*m_firstBitmap.Pixels()));
    return TRUE;
}

BOOL CDC::DeleteDC() {
    const bool had = m_surface != nullptr;
    m_surface.reset();
    m_bitmap = nullptr;
    m_memory = false;
    return had ? TRUE : FALSE;
}

CPen* CDC::SelectObject(CPen* pen) {
    return std::exchange(m_pen, pen);
}

CBrush* CDC::SelectObject(CBrush* brush) {
    return std::exchange(m_brush, brush);
}

CBitmap* CDC::SelectObject(CBitmap* bitmap) {
    if (!m_memory || bitmap == nullptr || bitmap->Pixels() == nullptr) return nullptr;
    AttachSurface(bitmap->Pixels(), WholeOf(*bitmap->Pixels()));
    return std::exchange(m_bitmap, bitmap);
}

int CDC::SetBkMode(int mode) {
    return std::exchange(m_bkMode, mode);
}

int CDC::SetMapMode(int mode) {
    if (mode != MM_TEXT) Unsupported("mapping mode", static_cast<unsigned long>(mode));
    return std::exchange(m_mapMode, mode);
}

CPoint CDC::SetWindowOrg(int x, int y) {
    return std::exchange(m_origin, CPoint(x, y));
}

void CDC::LPtoDP(RECT* rect) const {
    CRect moved(*rect);
    moved.OffsetRect(-m_origin.x, -m_origin.y);
    *rect = moved;
}

void CDC::DPtoLP(RECT* rect) const {
    CRect moved(*rect);
    moved.OffsetRect(m_origin.x, m_origin.y);
    *rect = moved;
}

int CDC::IntersectClipRect(const RECT* rect) {
    const CRect device = Device(*rect);
    const CRect before = m_clip;
    return m_clip.IntersectRect(&before, &device);
}

void CDC::FillSolidRect(const RECT* rect, COLORREF color) {
    FillDevice(Device(*rect), color);
}

void CDC::FillDevice(const RECT& rect, COLORREF color) {
    if (m_surface != nullptr) m_surface->Fill(rect, color, m_clip);
}

void CDC::FillSolidRect(int x, int y, int cx, int cy, COLORREF color) {
    const RECT rect{x, y, x + cx, y + cy};
    FillSolidRect(&rect, color);
}

void CDC::FillRect(const RECT* rect, CBrush* brush) {
    FillSolidRect(rect, brush->Color());
}

BOOL CDC::PatBlt(int x, int y, int cx, int cy, DWORD rop) {
    if (rop != BLACKNESS && rop != WHITENESS) return FALSE;
    FillSolidRect(x, y, cx, cy, rop == BLACKNESS ? RGB(0, 0, 0) : RGB(255, 255, 255));
    return TRUE;
}

void CDC::Draw3dRect(const RECT* rect, COLORREF topLeft, COLORREF bottomRight) {
    const CRect r = Device(*rect);
    FillDevice(CRect(r.left, r.top, r.right, r.top + 1), topLeft);
    FillDevice(CRect(r.left, r.top, r.left + 1, r.bottom), topLeft);
    FillDevice(CRect(r.right - 1, r.top, r.right, r.bottom), bottomRight);
    FillDevice(CRect(r.left, r.bottom - 1, r.right, r.bottom), bottomRight);
}

CPoint CDC::MoveTo(int x, int y) {
    return std::exchange(m_position, CPoint(x, y));
}

BOOL CDC::LineTo(int x, int y) {
    if (m_surface != nullptr)
        m_surface->Line(Device(m_position.x, m_position.y), Device(x, y),
                        m_pen == nullptr ? RGB(0, 0, 0) : m_pen->Color(), m_clip);
    m_position = CPoint(x, y);
    return TRUE;
}

BOOL CDC::Polyline(const POINT* points, int count) {
    // The current position is neither used nor changed.
    const CPoint kept = m_position;
    for (int i = 0; i < count; ++i) {
        if (i == 0)
            MoveTo(points[0].x, points[0].y);
        else
            LineTo(points[i].x, points[i].y);
    }
    m_position = kept;
    return TRUE;
}

BOOL CDC::BitBlt(int x, int y, int cx, int cy, CDC* source, int sx, int sy, DWORD rop) {
    if ((rop != SRCCOPY && rop != SRCPAINT) || m_surface == nullptr || source == nullptr ||
        source->m_surface == nullptr)
        return FALSE;
    const CRect area = Device(CRect(x, y, x + cx, y + cy));
    const CRect from = source->Device(CRect(sx, sy, sx + cx, sy + cy));
    if (source->m_scale == m_scale) {
        m_surface->Copy(area, *source->m_surface, from.left, from.top,
                        rop == SRCCOPY ? Surface::Raster::kCopy : Surface::Raster::kOr, m_clip);
        return TRUE;
    }
    if (rop != SRCCOPY) return FALSE;
    m_surface->Stretch(area, *source->m_surface, from, m_clip);
    return TRUE;
}

COLORREF CDC::GetPixel(int x, int y) const {
    const CPoint at = Device(x, y);
    return m_surface == nullptr ? 0 : m_surface->pixel(at.x, at.y);
}

BOOL CDC::DrawIcon(int x, int y, HICON icon) {
    const Image* image = IconImage(icon, m_scale.Length(GetSystemMetrics(SM_CXICON)));
    if (image == nullptr || m_surface == nullptr) return FALSE;
    const CPoint at = Device(x, y);
    m_surface->Blend(at.x, at.y, image->pixels.data(), image->width, image->height, m_clip);
    return TRUE;
}

BOOL CDC::DrawState(POINT at, SIZE, HICON icon, UINT flags) {
    if ((flags & ~DSS_DISABLED) != DST_ICON) return FALSE;
    if ((flags & DSS_DISABLED) == 0) return DrawIcon(at.x, at.y, icon);
    const Image* image = IconImage(icon, m_scale.Length(GetSystemMetrics(SM_CXICON)));
    if (image == nullptr || m_surface == nullptr) return FALSE;
    // The embossed look: the icon's shape in the highlight colour, and over it, one pixel up and left, in the
    // shadow colour.
    const CPoint origin = Device(at.x, at.y);
    Image shape = *image;
    for (const auto& [offset, index] :
         {std::pair(static_cast<int>(m_scale.factor), COLOR_BTNHIGHLIGHT), std::pair(0, COLOR_BTNSHADOW)}) {
        const COLORREF color = GetSysColor(index);
        const std::uint32_t rgb = static_cast<std::uint32_t>(GetRValue(color)) << 16U |
                                  static_cast<std::uint32_t>(GetGValue(color)) << 8U | GetBValue(color);
        for (std::uint32_t& pixel : shape.pixels) pixel = (pixel & 0xFF000000U) | rgb;
        m_surface->Blend(origin.x + offset, origin.y + offset, shape.pixels.data(), shape.width, shape.height,
                         m_clip);
    }
    return TRUE;
}

void CDC::DrawText(const std::string& text, const RECT& rect, DWORD format, COLORREF color) {
    NativeToolkit* toolkit = Toolkit();
    if (m_surface == nullptr || toolkit == nullptr || text.empty()) return;
    const CRect device = Device(rect);
    CRect inside;
    if (inside.IntersectRect(&device, &m_clip) == FALSE) return;
    Surface& surface = *m_surface;
    surface.Paint(inside, [&](std::uint32_t* pixels) {
        toolkit->DrawText(pixels, surface.width(), surface.height(), text, device, format, color,
                          surface.scale().factor);
    });
}
