// SPDX-License-Identifier: MIT
// Device contexts, bitmaps, pens and brushes in the framework's shape.
//
// The drawing rules are the framework's: a line leaves out its end point, rectangles leave out right and
// bottom, copies combine by copy or OR, nothing is smoothed. Logical units are pixels of 96 to the inch. A
// window on a denser screen, or one whose contents are enlarged, has a picture of more pixels, and what is
// drawn falls on these: rectangles by their edges, lines one device pixel wide, text and icons in their
// larger size, other pictures stretched once and smoothly. Differences from the framework: clip regions are
// rectangles, pens are one pixel wide, a context owns nothing that is selected into it, and drawing on a
// window goes to its retained picture, so it is allowed on any thread and never waits for the UI thread.
#pragma once

#include <memory>
#include <string>

#include "platform/framework/afxtypes.h"
#include "platform/framework/surface_scale.h"
#include "platform/framework/wintypes.h"

class CDC;
class CWnd;
class Surface;
class CPaintDC;

inline constexpr DWORD SRCCOPY = 0x00CC0020U;
inline constexpr DWORD SRCPAINT = 0x00EE0086U;
inline constexpr DWORD BLACKNESS = 0x00000042U;
inline constexpr DWORD WHITENESS = 0x00FF0062U;
inline constexpr int PS_SOLID = 0;
inline constexpr int OPAQUE = 2;
inline constexpr int MM_TEXT = 1;
inline constexpr DWORD BI_RGB = 0;
inline constexpr UINT DIB_RGB_COLORS = 0;
inline constexpr UINT DST_ICON = 0x0003;
inline constexpr UINT DSS_DISABLED = 0x0020;

struct BITMAPINFOHEADER {
    DWORD biSize;
    LONG biWidth;
    LONG biHeight;
    WORD biPlanes;
    WORD biBitCount;
    DWORD biCompression;
    DWORD biSizeImage;
    LONG biXPelsPerMeter;
    LONG biYPelsPerMeter;
    DWORD biClrUsed;
    DWORD biClrImportant;
};
static_assert(sizeof(BITMAPINFOHEADER) == 40);

// A bitmap's pixels; owned by the CBitmap it is attached to.
using HBITMAP = Surface*;

// Creates a bottom-up 24-bit off-screen image and returns its pixel memory (rows of width * 3 bytes padded to
// four, first row at the bottom), which lives as long as the bitmap. Null, and *bits null, when the header
// asks for anything else (top-down, other depths, compression, no area, more than 64 MiB). Any thread.
// Difference from the framework: no context, file mapping or offset is taken.
HBITMAP CreateDIBSection(const BITMAPINFOHEADER* header, UINT usage, void** bits);

class CGdiObject {
public:
    CGdiObject() = default;
    virtual ~CGdiObject() = default;
    CGdiObject(const CGdiObject&) = delete;
    CGdiObject& operator=(const CGdiObject&) = delete;
};

class CPen : public CGdiObject {
public:
    CPen() = default;
    // Style PS_SOLID; width 0 or 1, both one pixel. Anything else ends the program with a message.
    CPen(int style, int width, COLORREF color) { CreatePen(style, width, color); }
    BOOL CreatePen(int style, int width, COLORREF color);
    BOOL DeleteObject();
    COLORREF Color() const { return m_color; }

private:
    COLORREF m_color = 0;
};

class CBrush : public CGdiObject {
public:
    explicit CBrush(COLORREF color) : m_color(color) {}
    COLORREF Color() const { return m_color; }

private:
    COLORREF m_color;
};

class CBitmap : public CGdiObject {
public:
    // A bitmap of the screen's format and the context's scale; what it shows is for the caller to draw. The
    // size is in logical units; no context counts as one of a memory bitmap's. FALSE for an empty or absurd
    // size.
    BOOL CreateCompatibleBitmap(CDC* dc, int width, int height);
    // Takes the bitmap over; null is refused.
    BOOL Attach(HBITMAP bitmap);
    BOOL DeleteObject();
    // The pixels, null when there are none. Stay valid while a context that had them selected lives.
    const std::shared_ptr<Surface>& Pixels() const { return m_pixels; }

private:
    std::shared_ptr<Surface> m_pixels;
};

// A device context. Not shared between threads; different contexts may draw on one target at once.
class CDC {
public:
    CDC() = default;
    virtual ~CDC();
    CDC(const CDC&) = delete;
    CDC& operator=(const CDC&) = delete;

    // Turns this into a memory context with a one-pixel bitmap selected, as the framework does; FALSE when it
    // has a target already. The context given does not matter: every context has the same format, and the
    // scale is that of the bitmap that is selected.
    BOOL CreateCompatibleDC(CDC* dc);
    BOOL DeleteDC();

    // Of the target; 1 without one. An addition.
    const SurfaceScale& Scale() const { return m_scale; }

    // Selecting returns what was selected before; the object must live while it is selected. A bitmap goes
    // into memory contexts only, else null and nothing changes.
    CPen* SelectObject(CPen* pen);
    CBrush* SelectObject(CBrush* brush);
    CBitmap* SelectObject(CBitmap* bitmap);

    int GetBkMode() const { return m_bkMode; }
    int SetBkMode(int mode);
    int GetMapMode() const { return m_mapMode; }
    // Only MM_TEXT; any other mode ends the program with a message.
    int SetMapMode(int mode);
    // The logical point that falls on the target's first pixel; returns the one before.
    CPoint SetWindowOrg(int x, int y);
    // Moved by the origin. Both sides are in logical units.
    void LPtoDP(RECT* rect) const;
    void DPtoLP(RECT* rect) const;
    // Restricts drawing further to the rectangle.
    int IntersectClipRect(const RECT* rect);

    void FillSolidRect(const RECT* rect, COLORREF color);
    void FillSolidRect(int x, int y, int cx, int cy, COLORREF color);
    void FillRect(const RECT* rect, CBrush* brush);
    // rop: BLACKNESS or WHITENESS; FALSE for any other.
    BOOL PatBlt(int x, int y, int cx, int cy, DWORD rop);
    // The one-pixel edge along the inside of the rectangle; both lower corners and the upper right one have
    // the second colour.
    void Draw3dRect(const RECT* rect, COLORREF topLeft, COLORREF bottomRight);
    CPoint MoveTo(int x, int y);
    BOOL LineTo(int x, int y);
    BOOL Polyline(const POINT* points, int count);
    // rop: SRCCOPY or SRCPAINT; FALSE for any other, or when either context has no target. A source of
    // another scale is stretched, smoothly, and SRCCOPY only.
    BOOL BitBlt(int x, int y, int cx, int cy, CDC* source, int sx, int sy, DWORD rop);
    COLORREF GetPixel(int x, int y) const;
    // Draws the icon in its own size, which is 32 logical pixels; UI thread where the target has another
    // scale than 1. FALSE for no icon.
    BOOL DrawIcon(int x, int y, HICON icon);
    // flags: DST_ICON, with DSS_DISABLED for the embossed grey look (highlight colour one pixel right and
    // down of the shadow colour); FALSE for any other. Differences from the framework: the size is taken but
    // the icon keeps its own, and no brush is asked for.
    BOOL DrawState(POINT at, SIZE size, HICON icon, UINT flags);
    // One line of text in the dialogs' face, cut to the rectangle. Difference from the framework: format
    // takes the SS_… type and SS_CENTERIMAGE. UI thread.
    void DrawText(const std::string& text, const RECT& rect, DWORD format, COLORREF color);

protected:
    friend class CPaintDC;
    void AttachSurface(std::shared_ptr<Surface> surface, const RECT& clip);

private:
    CPoint Device(int x, int y) const;
    CRect Device(const RECT& rect) const;
    void FillDevice(const RECT& rect, COLORREF color);

    std::shared_ptr<Surface> m_surface;
    SurfaceScale m_scale;  // the surface's
    CRect m_clip;          // device pixels
    CPoint m_origin;
    CPoint m_position;
    CPen* m_pen = nullptr;
    CBrush* m_brush = nullptr;
    CBitmap* m_bitmap = nullptr;
    CBitmap m_firstBitmap;  // what a fresh memory context has selected
    int m_bkMode = OPAQUE;
    int m_mapMode = MM_TEXT;
    bool m_memory = false;
};

// Draws on a window's client area; what was drawn is shown when the context ends. Any thread, while the
// window lives. Allocates nothing.
class CClientDC : public CDC {
public:
    explicit CClientDC(CWnd* window);
    ~CClientDC() override;

private:
    HWND m_hWnd;
};

struct PAINTSTRUCT {
    BOOL fErase;
    RECT rcPaint;
};

// The context of a WM_PAINT handler: clipped to the part that needs painting, which counts as painted from
// here on. The background is erased first when an invalidation asked for it. UI thread.
class CPaintDC : public CDC {
public:
    explicit CPaintDC(CWnd* window);
    // For windows that no object wraps.
    explicit CPaintDC(HWND window);
    ~CPaintDC() override;
    PAINTSTRUCT m_ps;

private:
    HWND m_hWnd;
};
