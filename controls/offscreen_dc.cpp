// SPDX-License-Identifier: MIT
#include "controls/offscreen_dc.h"

COffscreenDC::COffscreenDC(CDC* pTarget, const RECT& rect)
    : m_pBitmap(std::make_unique<CBitmap>()), m_pTarget(pTarget), m_rect(rect) {
    CreateCompatibleDC(pTarget);
    if (m_pBitmap->CreateCompatibleBitmap(pTarget, m_rect.Width(), m_rect.Height())) {
        m_pPrevBitmap = SelectObject(m_pBitmap.get());
    }
    SetWindowOrg(m_rect.left, m_rect.top);
}

COffscreenDC::~COffscreenDC() {
    if (m_pPrevBitmap == nullptr) return;
    m_pTarget->BitBlt(m_rect.left, m_rect.top, m_rect.Width(), m_rect.Height(), this, m_rect.left, m_rect.top,
                      SRCCOPY);
    SelectObject(m_pPrevBitmap);
}
