// SPDX-License-Identifier: MIT
// Off-screen context over any other context.
#pragma once

#include <memory>

#include "platform/framework/afxgdi.h"

// Draws into a bitmap that stands for a rectangle of the target and is copied there when the object ends. A
// point keeps its logical coordinates: (x, y) here is (x, y) on the target. The bitmap's first content does
// not count: the user paints all of it. An empty rectangle draws and copies nothing. UI thread.
class COffscreenDC : public CDC {
public:
    // The target must outlive the object.
    COffscreenDC(CDC* pTarget, const RECT& rect);
    ~COffscreenDC() override;

private:
    std::unique_ptr<CBitmap> m_pBitmap;
    CBitmap* m_pPrevBitmap = nullptr;
    CDC* m_pTarget;
    CRect m_rect;  // logical units of the target
};
