// SPDX-License-Identifier: MIT
// Off-screen context of a WM_PAINT handler.
#pragma once

#include <memory>

#include "platform/framework/afxwin.h"

// Fills the rectangle with the colour: black and white by their raster operations, others as a solid
// rectangle. All three give the same pixels as a solid fill.
void FillBackground(CDC& dc, const RECT& rect, COLORREF color);

// Draws into a bitmap that stands for the paint rectangle of a CPaintDC, cleared to a background colour, and
// is copied there in one transfer, so that a repaint does not flicker. A point keeps its logical coordinates:
// (x, y) here is (x, y) on the target. One object lives for one paint. An empty paint rectangle draws and
// copies nothing. UI thread.
class CMemDC : public CDC {
public:
    // The target must outlive the object.
    CMemDC(CPaintDC* pTarget, COLORREF clrBackground);
    ~CMemDC() override = default;

    // Copies the bitmap onto the target and frees it; call it once, after all drawing. With bReleaseTarget
    // the target, a context of pWindow, ends too and draws nothing more.
    void CopyBack(BOOL bReleaseTarget, CWnd* pWindow);

private:
    CPaintDC* m_pTarget;
    CRect m_rect;  // the target's paint rectangle, logical units
    std::unique_ptr<CBitmap> m_pBitmap;
    CBitmap* m_pPrevBitmap = nullptr;
};
