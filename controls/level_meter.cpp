// SPDX-License-Identifier: MIT
#include "controls/level_meter.h"

#include <algorithm>
#include <optional>

#include "controls/offscreen_dc.h"

BEGIN_MESSAGE_MAP(CLevelMeter, CStatic)
ON_WM_PAINT()
END_MESSAGE_MAP()

void CLevelMeter::SetRange(int nLow, int nHigh) {
    if (nHigh < nLow || nLow < 0) return;
    m_nLow = nLow;
    m_nHigh = nHigh;
}

void CLevelMeter::SetPos(int nPosition) {
    if (nPosition < m_nLow || nPosition > m_nHigh) return;
    m_nPosition = nPosition;
    Invalidate(TRUE);
}

int CLevelMeter::LitSegments() const {
    if (m_nHigh == m_nLow) return 0;
    const double lit = static_cast<double>(m_nPosition) * m_nSegments / (m_nHigh - m_nLow);
    // Segments above the topmost lie outside the control; a range far from 0 would count them in thousands.
    return static_cast<int>(std::min<double>(lit, m_nSegments));
}

void CLevelMeter::Draw(CDC* pTarget) {
    if (GetSafeHwnd() == nullptr) return;
    std::optional<CClientDC> client;  // outlives the off-screen context that is copied to it
    if (pTarget == nullptr) pTarget = &client.emplace(this);

    CRect rect;
    GetClientRect(rect);
    COffscreenDC dc(pTarget, rect);
    dc.FillSolidRect(rect, m_clrBackground);

    const int height = rect.Height() / m_nSegments;
    const int lit = LitSegments();
    if (lit <= 0) return;
    for (int i = 0; i <= lit; ++i) {
        const auto red = static_cast<unsigned>(i * 255 / m_nSegments);
        dc.FillSolidRect(0, (m_nSegments - i) * height, rect.Width(), height - 1, RGB(red, 255U - red, 0));
    }
}

void CLevelMeter::OnPaint() {
    CPaintDC dc(this);
    Draw(&dc);
}
