// SPDX-License-Identifier: MIT
#include "controls/position_bar.h"

#include <algorithm>

#include "res/resource.h"

namespace {

constexpr int kFramesPerSecond = 50;
constexpr int kWheelFrames = 5 * kFramesPerSecond;  // for one notch
constexpr UINT_PTR kTipTool = 1;
constexpr int kTipAutoPopMs = 10000;
constexpr int kTipInitialMs = 100;

// Minutes and seconds, from an hour on with the hours.
CString ClockText(std::int64_t nFrames) {
    const std::int64_t seconds = nFrames / kFramesPerSecond;
    const int hours = static_cast<int>(seconds / 3600);
    const int minutes = static_cast<int>(seconds / 60 % 60);
    CString text;
    if (hours > 0) {
        text.Format("%d:%02d:%02d", hours, minutes, static_cast<int>(seconds % 60));
    } else {
        text.Format("%d:%02d", minutes, static_cast<int>(seconds % 60));
    }
    return text;
}

}  // namespace

BEGIN_MESSAGE_MAP(CPositionBar, CStatic)
ON_WM_PAINT()
ON_WM_LBUTTONDOWN()
ON_WM_LBUTTONDBLCLK()
ON_WM_LBUTTONUP()
ON_WM_MOUSEMOVE()
ON_WM_CAPTURECHANGED()
ON_WM_MOUSEWHEEL()
ON_WM_SETFOCUS()
ON_WM_KILLFOCUS()
END_MESSAGE_MAP()

CPositionBar::CPositionBar() : m_clrBackground(GetSysColor(COLOR_BACKGROUND)) {}

void CPositionBar::PreSubclassWindow() {
    SetAccessibleName("Position");
    CStatic::PreSubclassWindow();
}

void CPositionBar::SetRange(std::int64_t nFrames) {
    m_nRange = std::max<std::int64_t>(nFrames, 0);
}

void CPositionBar::SetLead(int nFrames) {
    m_nLead = nFrames;
}

void CPositionBar::StepIt(BOOL bMayWait) {
    m_nHead = std::min(m_nHead + m_nStep, m_nRange);
    if (m_nHead >= m_nLead) m_nTail = std::min(m_nTail + m_nStep, m_nRange);
    if (!bMayWait || IsFarOff()) ShowBand();
}

BOOL CPositionBar::IsFarOff() const {
    CRect client;
    GetClientRect(client);
    const Band band = BandIn(client.right);
    return band.nHead - m_painted.nHead > 1 || band.nTail - m_painted.nTail > 1;
}

void CPositionBar::SetPosition(std::int64_t nFrame) {
    MoveHead(nFrame);
    AnnounceValue();
}

void CPositionBar::MoveHead(std::int64_t nFrame) {
    m_nHead = std::clamp<std::int64_t>(nFrame, 0, m_nRange);
    m_nTail = TailOf(m_nHead);
    ShowBand();
}

void CPositionBar::Reset() {
    m_nHead = 0;
    m_nTail = 0;
    m_nWheel = 0;
    if (m_bDragging) {
        m_bDragging = FALSE;
        ReleaseCapture();
    }
    Invalidate(TRUE);
    AnnounceValue();
}

std::int64_t CPositionBar::TailOf(std::int64_t nHead) const {
    return nHead < m_nLead ? 0 : std::min(nHead - m_nLead + m_nStep, nHead);
}

// The first of the frames that are shown at this pixel, so that the head stands where it was put.
std::int64_t CPositionBar::FrameAt(int x) const {
    CRect client;
    GetClientRect(client);
    if (m_nRange == 0 || client.right <= 0) return 0;
    const std::int64_t inside = std::clamp<std::int64_t>(x, 0, client.right);
    return (inside * m_nRange + client.right - 1) / client.right;
}

int CPositionBar::PixelOf(std::int64_t nFrame, int nWidth) const {
    if (m_nRange == 0) return 0;
    // A range made smaller since the last step may leave a position beyond it.
    const std::int64_t inside = std::min(nFrame, m_nRange);
    return static_cast<int>(static_cast<double>(inside) / static_cast<double>(m_nRange) * nWidth);
}

CPositionBar::Band CPositionBar::BandIn(int nWidth) const {
    const std::int64_t head = m_bDragging ? m_nDragged : m_nHead;
    const std::int64_t tail = m_bDragging ? TailOf(m_nDragged) : m_nTail;
    Band band = {PixelOf(tail, nWidth), PixelOf(head, nWidth)};
    // In a long message the band would be too thin to see, and at its start not be there at all.
    const std::int64_t length = std::max(m_nLead - m_nStep, 0);
    if (head > tail && length * nWidth < kLeastBand * m_nRange) {
        band.nHead = std::max(band.nHead, kLeastBand);
        band.nTail = std::min(band.nTail, band.nHead - kLeastBand);
    }
    return band;
}

// A long message has many frames to a pixel; the same picture need not be painted again.
void CPositionBar::ShowBand() {
    CRect client;
    GetClientRect(client);
    if (BandIn(client.right) == m_painted) return;
    RedrawWindow(nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_UPDATENOW);
}

CString CPositionBar::TextAt(std::int64_t nFrame) const {
    const CString time = ClockText(nFrame);
    const CString whole = ClockText(m_nRange);
    CString text;
    text.Format(IDS_POSITION_OF, static_cast<LPCTSTR>(time), static_cast<LPCTSTR>(whole));
    return text;
}

double CPositionBar::Value() const {
    return static_cast<double>(m_nHead) / kFramesPerSecond;
}

double CPositionBar::MaximumValue() const {
    return static_cast<double>(m_nRange) / kFramesPerSecond;
}

CString CPositionBar::ValueText() const {
    return TextAt(m_nHead);
}

void CPositionBar::SetValue(double fSeconds) {
    if (m_nRange == 0 || m_bDragging || !(fSeconds >= 0.0)) return;
    MoveHead(static_cast<std::int64_t>(std::min(fSeconds, MaximumValue()) * kFramesPerSecond));
    Tell(WM_POSITION_RELEASED, m_nHead);
}

void CPositionBar::Tell(UINT nMessage, std::int64_t nFrame) const {
    if (CWnd* pParent = GetParent()) pParent->SendMessage(nMessage, static_cast<WPARAM>(nFrame));
}

void CPositionBar::DragTo(int x) {
    const std::int64_t frame = FrameAt(x);
    if (frame == m_nDragged) return;
    m_nDragged = frame;
    ShowBand();
    Tell(WM_POSITION_DRAGGED, frame);
}

void CPositionBar::OnLButtonDown(UINT nFlags, CPoint point) {
    CStatic::OnLButtonDown(nFlags, point);
    if (m_nRange == 0) return;
    SetCapture();
    m_bDragging = TRUE;
    m_nDragged = -1;
    DragTo(point.x);
}

void CPositionBar::OnLButtonDblClk(UINT nFlags, CPoint point) {
    OnLButtonDown(nFlags, point);
}

void CPositionBar::OnLButtonUp(UINT nFlags, CPoint point) {
    CStatic::OnLButtonUp(nFlags, point);
    if (!m_bDragging) return;
    DragTo(point.x);
    // The parent may have ended the drag when it heard of its last frame.
    if (!m_bDragging) return;
    m_bDragging = FALSE;
    ReleaseCapture();
    MoveHead(m_nDragged);
    Tell(WM_POSITION_RELEASED, m_nDragged);
}

void CPositionBar::OnMouseMove(UINT nFlags, CPoint point) {
    CStatic::OnMouseMove(nFlags, point);
    if (m_bDragging) DragTo(point.x);
}

void CPositionBar::OnCaptureChanged(CWnd* pWnd) {
    CStatic::OnCaptureChanged(pWnd);
    if (!m_bDragging) return;
    m_bDragging = FALSE;
    ShowBand();
    Tell(WM_POSITION_DRAG_CANCELLED, m_nHead);
}

BOOL CPositionBar::OnMouseWheel(UINT, short zDelta, CPoint) {
    if (m_nRange == 0) return FALSE;
    m_nWheel += zDelta * kWheelFrames;
    const int frames = m_nWheel / WHEEL_DELTA;
    m_nWheel -= frames * WHEEL_DELTA;
    CWnd* pParent = GetParent();
    if (frames != 0 && pParent != nullptr) pParent->SendMessage(WM_POSITION_MOVE_BY, 0, frames);
    return TRUE;
}

void CPositionBar::OnSetFocus(CWnd* pOldWnd) {
    CStatic::OnSetFocus(pOldWnd);
    m_bFocused = TRUE;
    Invalidate(TRUE);
}

void CPositionBar::OnKillFocus(CWnd* pNewWnd) {
    CStatic::OnKillFocus(pNewWnd);
    m_bFocused = FALSE;
    Invalidate(TRUE);
}

// The tip names the time under the pointer, so its text is set before the move reaches it.
BOOL CPositionBar::PreTranslateMessage(MSG* pMsg) {
    if (pMsg->message == WM_MOUSEMOVE) {
        CRect client;
        GetClientRect(client);
        const CString text = TextAt(FrameAt(afx::PointOf(pMsg->lParam).x));
        if (m_toolTip.GetSafeHwnd() == nullptr) {
            m_toolTip.Create(this);
            m_toolTip.SetDelayTime(TTDT_AUTOPOP, kTipAutoPopMs);
            m_toolTip.SetDelayTime(TTDT_INITIAL, kTipInitialMs);
            m_toolTip.AddTool(this, text, client, kTipTool);
        }
        m_toolTip.UpdateTipText(text, this, kTipTool);
        m_toolTip.Activate(m_nRange > 0 ? TRUE : FALSE);
    }
    m_toolTip.RelayEvent(pMsg);
    return CStatic::PreTranslateMessage(pMsg);
}

void CPositionBar::OnPaint() {
    CPaintDC dc(this);
    CRect client;
    GetClientRect(client);
    const Band band = BandIn(client.right);

    CBrush brushBackground(m_clrBackground);
    CBrush brushBar(m_clrBar);
    dc.FillRect(CRect(client.left, client.top, band.nTail, client.bottom), &brushBackground);
    dc.FillRect(CRect(band.nHead, client.top, client.right, client.bottom), &brushBackground);
    dc.FillRect(CRect(band.nTail, client.top, band.nHead, client.bottom), &brushBar);
    if (m_bFocused) {
        // One of the two is seen, on the band and beside it.
        dc.Draw3dRect(client, RGB(0, 0, 0), RGB(0, 0, 0));
        client.InflateRect(-1, -1);
        dc.Draw3dRect(client, RGB(0xFF, 0xFF, 0xFF), RGB(0xFF, 0xFF, 0xFF));
    }

    m_painted = band;
}
