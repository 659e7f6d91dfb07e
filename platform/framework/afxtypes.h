// SPDX-License-Identifier: MIT
// CPoint, CSize and CRect: the framework's geometry with conveniences.
#pragma once

#include <algorithm>

#include "platform/framework/wintypes.h"

struct CPoint : POINT {
    CPoint() : POINT{0, 0} {}
    CPoint(int px, int py) : POINT{px, py} {}
    CPoint(POINT p) : POINT(p) {}
};

struct CRect : RECT {
    CRect() : RECT{0, 0, 0, 0} {}
    CRect(int l, int t, int r, int b) : RECT{l, t, r, b} {}
    CRect(const RECT& r) : RECT(r) {}
    CRect(POINT topLeft, POINT bottomRight) : RECT{topLeft.x, topLeft.y, bottomRight.x, bottomRight.y} {}

    friend bool operator==(const CRect& a, const CRect& b) {
        return a.left == b.left && a.top == b.top && a.right == b.right && a.bottom == b.bottom;
    }
    operator RECT*() { return this; }
    operator const RECT*() const { return this; }
    int Width() const { return right - left; }
    int Height() const { return bottom - top; }
    BOOL IsRectEmpty() const { return (right <= left || bottom <= top) ? TRUE : FALSE; }
    BOOL PtInRect(POINT p) const {
        return (p.x >= left && p.x < right && p.y >= top && p.y < bottom) ? TRUE : FALSE;
    }
    void OffsetRect(int dx, int dy) {
        left += dx;
        right += dx;
        top += dy;
        bottom += dy;
    }
    // Grows (or, with negative amounts, shrinks) on every side.
    void InflateRect(int dx, int dy) {
        left -= dx;
        right += dx;
        top -= dy;
        bottom += dy;
    }
    // The common area, or an empty rectangle (FALSE).
    BOOL IntersectRect(const RECT* a, const RECT* b) {
        left = std::max(a->left, b->left);
        top = std::max(a->top, b->top);
        right = std::min(a->right, b->right);
        bottom = std::min(a->bottom, b->bottom);
        if (!IsRectEmpty()) return TRUE;
        left = top = right = bottom = 0;
        return FALSE;
    }
};
