// SPDX-License-Identifier: MIT
#include "controls/mem_dc.h"

void FillBackground(CDC& dc, const RECT& rect, COLORREF color) {
    const int width = rect.right - rect.left;
    const int height = rect.bottom - rect.top;
    if (color == RGB(0, 0, 0)) {
        dc.PatBlt(rect.left, rect.top, width, height, BLACKNESS);
    } else if (color == RGB(0xFF, 0xFF, 0xFF)) {
        dc.PatBlt(rect.left, rect.top, width, height, WHITENESS);
    } else {
        dc.FillSolidRect(&rect, color);
    }
}

CMemDC::CMemDC(CPaintDC* pTarget, COLORREF clrBackground)
    : m_pTarget(pTarget), m_rect(pTarget->m_ps.rcPaint), m_pBitmap(std::make_unique<CBitmap>()) {
    CreateCompatibleDC(pTarget);
    SetBkMode(pTarget->GetBkMode());

    pTarget->LPtoDP(m_rect);
    if (m_pBitmap->CreateCompatibleBitmap(pTarget, m_rect.Width(), m_rect.Height())) {
        m_pPrevBitmap = SelectObject(m_pBitmap.get());
    }
    SetMapMode(pTarget->GetMapMode());
    pTarget->DPtoLP(m_rect);
    SetWindowOrg(m_rect.left, m_rect.top);
    FillBackground(*this, m_rect, clrBackground);
}

void CMemDC::CopyBack(BOOL bReleaseTarget, CWnd* pWindow) {
    if (m_pPrevBitmap != nullptr) {
        m_pTarget->BitBlt(m_rect.left, m_rect.top, m_rect.Width(), m_rect.Height(), this, m_rect.left,
                          m_rect.top, SRCCOPY);
        SelectObject(m_pPrevBitmap);
        m_pPrevBitmap = nullptr;
    }
    m_pBitmap.reset();
    if (bReleaseTarget && pWindow != nullptr) m_pTarget->DeleteDC();
}
