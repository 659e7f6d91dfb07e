#include "controls/position_bar.h"

#include <algorithm>
#include <cstdint>

BEGIN_MESSAGE_MAP(CPositionBar, CStatic)
ON_WM_PAINT()
END_MESSAGE_MAP()

CPositionBar::CPositionBar() : m_clrBackground(GetSysColor(COLOR_BACKGROUND)) {}

void CPositionBar::SetRange(int nFrames) {
    m_nRange = nFrames;
}

void CPositionBar::SetLead(int nFrames) {
    m_nLead = nFrames;
}

int CPositionBar::Advanced(int nPosition) const {
    return static_cast<int>(std::min<std::int64_t>(std::int64_t{nPosition} + m_nStep, m_nRange));
}

int CPositionBar::PixelOf(int nPosition, int nWidth) const {
    if (m_nRange <= 0) return 0;
    // A range made smaller since the last step may leave a position beyond it.
    const int inside = std::min(nPosition, m_nRange);
    return static_cast<int>(static_cast<double>(inside) / m_nRange * nWidth);
}

void CPositionBar::StepIt() {
    m_nHead = Advanced(m_nHead);
    if (m_nHead >= m_nLead) m_nTail = Advanced(m_nTail);

    CRect client;
    GetClientRect(client);
    // A long message has many frames to a pixel; the same picture need not be painted again.
    if (PixelOf(m_nHead, client.right) == m_nPaintedHead &&
        PixelOf(m_nTail, client.right) == m_nPaintedTail) {
        return;
    }
    RedrawWindow(nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_UPDATENOW);
}

void CPositionBar::Reset() {
    m_nHead = 0;
    m_nTail = 0;
    Invalidate(TRUE);
}

void CPositionBar::OnPaint() {
    CPaintDC dc(this);
    CRect client;
    GetClientRect(client);
    const int tail = PixelOf(m_nTail, client.right);
    const int head = PixelOf(m_nHead, client.right);

    CBrush brushBackground(m_clrBackground);
    CBrush brushBar(m_clrBar);
    dc.FillRect(CRect(client.left, client.top, tail, client.bottom), &brushBackground);
    dc.FillRect(CRect(head, client.top, client.right, client.bottom), &brushBackground);
    dc.FillRect(CRect(tail, client.top, head, client.bottom), &brushBar);

    m_nPaintedTail = tail;
    m_nPaintedHead = head;
}
