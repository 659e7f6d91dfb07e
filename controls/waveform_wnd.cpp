// SPDX-License-Identifier: MIT
#include "controls/waveform_wnd.h"

#include <algorithm>
#include <cmath>

#include "controls/mem_dc.h"

namespace {

constexpr int kMargin = 4;
constexpr int kGridRows = 5;
constexpr int kShownReserve = 128;  // more than the panel's trace shows
// How far inside the range a value at or beyond one of its ends is drawn.
constexpr float kEdge = 0.001F;

}  // namespace

BEGIN_MESSAGE_MAP(CWaveformWnd, CWnd)
ON_WM_PAINT()
ON_WM_SIZE()
ON_MESSAGE(WM_DPICHANGED_AFTERPARENT, OnScaleChanged)
END_MESSAGE_MAP()

void CWaveformWnd::Canvas::Create(CDC* pWindowDC, int width, int height) {
    if (!bitmap.CreateCompatibleBitmap(pWindowDC, width, height)) return;
    dc.CreateCompatibleDC(pWindowDC);
    pPrevBitmap = dc.SelectObject(&bitmap);
}

void CWaveformWnd::Canvas::Free() {
    if (!Exists()) return;
    dc.SelectObject(pPrevBitmap);
    pPrevBitmap = nullptr;
    bitmap.DeleteObject();
    dc.DeleteDC();
}

CWaveformWnd::CWaveformWnd() : m_penPlot(PS_SOLID, 0, m_clrPlot) {
    m_queue.Reserve(kQueueReserve);
    m_shown.Reserve(kShownReserve);
}

CWaveformWnd::~CWaveformWnd() {
    m_grid.Free();
    m_trace.Free();
    DestroyWindow();
}

BOOL CWaveformWnd::Create(DWORD dwStyle, const RECT& rect, CWnd* pParent, UINT nID) {
    static const CString className = AfxRegisterWndClass(CS_HREDRAW | CS_VREDRAW);

    if (!CreateEx(WS_EX_STATICEDGE, className, "", dwStyle, rect, pParent, nID)) return FALSE;
    SetAccessibleName("Level trace");
    RedrawAll();
    return TRUE;
}

void CWaveformWnd::SetRange(float fLower, float fUpper, BOOL bRedraw) {
    if (!(fUpper >= fLower && fUpper >= 0.0F)) return;
    m_fLower = fLower;
    m_fUpper = fUpper;
    if (bRedraw) {
        RecalcLayout();
        RedrawAll();
    }
}

void CWaveformWnd::SetShift(int nPixels) {
    m_nShift = nPixels;
    m_nHalfShift = nPixels / 2;
    m_nShiftPlusHalf = m_nShift + m_nHalfShift;
}

void CWaveformWnd::SetBackgroundColor(COLORREF color) {
    if (color == m_clrBackground) return;
    m_clrBackground = color;
    RedrawAll();
}

void CWaveformWnd::SetGridColor(COLORREF color) {
    if (color == m_clrGrid) return;
    m_clrGrid = color;
    RedrawAll();
}

void CWaveformWnd::SetPlotColor(COLORREF color) {
    if (color == m_clrPlot) return;
    m_clrPlot = color;
    m_penPlot.DeleteObject();
    m_penPlot.CreatePen(PS_SOLID, 0, m_clrPlot);
    RedrawAll();
}

void CWaveformWnd::QueueValue(float fValue) {
    const CSingleLock lock(&m_queueLock);
    m_queue.Add(fValue);
}

void CWaveformWnd::ShowNextValue() {
    float value = 0.0F;
    {
        const CSingleLock lock(&m_queueLock);
        if (m_queue.GetSize() == 0) return;
        value = m_queue.GetAt(0);
        m_queue.RemoveAt(0);
    }
    AppendPoint(value);
}

void CWaveformWnd::ClearQueue() {
    const CSingleLock lock(&m_queueLock);
    m_queue.RemoveAll();
}

void CWaveformWnd::Reset() {
    RedrawAll();
}

void CWaveformWnd::RecalcLayout() {
    m_rectPlot = CRect(kMargin, kMargin, m_rectClient.right - kMargin, m_rectClient.bottom - kMargin);
    m_fScale = static_cast<float>(m_rectPlot.Height()) / (m_fUpper - m_fLower);

    // The continuity value stays a value when range or size change after something was drawn: the next
    // segment then starts at the same value on the new scale, or at the nearer end of the new range.
    if (m_fLast == 0.0F) {
        m_fLast = m_fLower;
    } else {
        m_fLast = std::clamp(m_fLast, m_fLower, m_fUpper);
    }
}

void CWaveformWnd::RedrawAll() {
    m_shown.RemoveAll();
    DrawCanvases();
}

void CWaveformWnd::DrawCanvases() {
    if (GetSafeHwnd() == nullptr) return;
    if (m_grid.Exists()) DrawGrid();
    if (m_trace.Exists()) {
        FillBackground(m_trace.dc, m_rectClient, m_clrBackground);
        CRect clip = m_rectPlot;
        clip.InflateRect(1, 1);
        m_trace.dc.IntersectClipRect(clip);
    }
    InvalidateRect(m_rectClient, TRUE);
}

void CWaveformWnd::DrawGrid() {
    CDC& dc = m_grid.dc;
    const CRect plot = m_rectPlot;
    dc.FillSolidRect(m_rectClient, m_clrBackground);
    FillBackground(dc, plot, m_clrBackground);

    CPen penGrid(PS_SOLID, 0, m_clrGrid);
    CPen* const pPrevPen = dc.SelectObject(&penGrid);
    const POINT frame[] = {{plot.left, plot.top},
                           {plot.right + 1, plot.top},
                           {plot.right + 1, plot.bottom + 1},
                           {plot.left, plot.bottom + 1},
                           {plot.left, plot.top}};
    dc.Polyline(frame, static_cast<int>(std::size(frame)));

    const int step = plot.Height() / kGridRows;
    for (int k = 1; k < kGridRows; ++k) {
        dc.MoveTo(plot.left, plot.top + k * step);
        dc.LineTo(plot.right + 1, plot.top + k * step);
    }
    // Anchored at the right edge, where new values enter. A plot too low for a grid has no columns either.
    const int columns = step == 0 ? 0 : plot.Width() / step;
    for (int k = 1; k < columns; ++k) {
        dc.MoveTo(plot.right - k * step, plot.top);
        dc.LineTo(plot.right - k * step, plot.bottom + 1);
    }
    dc.SelectObject(pPrevPen);
}

int CWaveformWnd::PlotY(float fValue) const {
    const float rise = (fValue - m_fLower) * m_fScale;
    // An empty or endless range, or a scale that no longer fits it, has heights that no integer holds.
    constexpr float kFar = 30000.0F;
    if (std::isnan(rise)) return m_rectPlot.bottom;
    return m_rectPlot.bottom - static_cast<int>(std::clamp(rise, -kFar, kFar));
}

float CWaveformWnd::InRange(float fValue) const {
    if (fValue >= m_fUpper) fValue = m_fUpper - kEdge;
    return fValue > m_fLower ? fValue : m_fLower + kEdge;
}

void CWaveformWnd::AppendPoint(float fValue) {
    fValue = InRange(fValue);
    if (m_shown.GetSize() == 0) m_shown.Add(m_fLast);
    if (m_shown.GetSize() > GetVisibleCount()) m_shown.RemoveAt(0);
    m_shown.Add(fValue);
    if (m_trace.Exists()) {
        CDC& dc = m_trace.dc;
        const CRect plot = m_rectPlot;
        // The row under the plot takes part, because the lowest values are drawn there.
        dc.BitBlt(plot.left, plot.top + 1, plot.Width(), plot.Height(), &dc, plot.left + m_nShift,
                  plot.top + 1, SRCCOPY);
        FillBackground(dc, CRect(plot.right - m_nShift, plot.top, plot.right, plot.bottom), m_clrBackground);

        CPen* const pPrevPen = dc.SelectObject(&m_penPlot);
        dc.MoveTo(plot.right - m_nShiftPlusHalf, PlotY(m_fLast));
        dc.LineTo(plot.right - m_nHalfShift, PlotY(fValue));
        dc.SelectObject(pPrevPen);
    }
    m_fLast = fValue;
    Invalidate(TRUE);
}

int CWaveformWnd::GetVisibleCount() const {
    if (m_nShift <= 0) return 0;
    return std::max(m_rectPlot.Width() - m_nHalfShift + m_nShift - 1, 0) / m_nShift + 1;
}

// One line through all of them takes as long as a few that scroll.
void CWaveformWnd::ShowValues(const float* pValues, int nCount) {
    m_shown.RemoveAll();
    const int count = std::min(nCount, GetVisibleCount());
    for (int i = nCount - count; i < nCount; ++i) m_shown.Add(InRange(pValues[i]));
    DrawShown();
}

void CWaveformWnd::DrawShown() {
    DrawCanvases();
    const int count = m_shown.GetSize();
    if (count <= 0) return;
    m_fLast = m_shown.GetAt(count - 1);
    if (!m_trace.Exists()) return;
    const CRect plot = m_rectPlot;
    CDC& dc = m_trace.dc;
    CPen* const pPrevPen = dc.SelectObject(&m_penPlot);
    int x = plot.right - m_nHalfShift - (count - 1) * m_nShift;
    dc.MoveTo(x, PlotY(m_shown.GetAt(0)));
    for (int i = 1; i < count; ++i) {
        x += m_nShift;
        dc.LineTo(x, PlotY(m_shown.GetAt(i)));
    }
    dc.SelectObject(pPrevPen);
    // What has scrolled out of the plot is not seen beside it.
    FillBackground(dc, CRect(0, plot.top, plot.left, plot.bottom + 1), m_clrBackground);
}

LRESULT CWaveformWnd::OnScaleChanged(WPARAM, LPARAM) {
    m_grid.Free();
    m_trace.Free();
    DrawShown();
    return 0;
}

void CWaveformWnd::CreateCanvases() {
    CClientDC dc(this);
    m_grid.Create(&dc, m_rectClient.Width(), m_rectClient.Height());
    m_trace.Create(&dc, m_rectClient.Width(), m_rectClient.Height());
    DrawShown();
}

void CWaveformWnd::OnPaint() {
    // Not before: beside a message with pictures this window is never seen.
    if (!m_trace.Exists()) CreateCanvases();
    CPaintDC dc(this);
    CMemDC mem(&dc, m_clrBackground);
    mem.BitBlt(0, 0, m_rectClient.Width(), m_rectClient.Height(), &m_grid.dc, 0, 0, SRCCOPY);
    // By OR the trace shows over the grid, and its black ground lets the grid through.
    mem.BitBlt(0, 0, m_rectClient.Width(), m_rectClient.Height(), &m_trace.dc, 0, 0, SRCPAINT);
    mem.CopyBack(FALSE, nullptr);
}

void CWaveformWnd::OnSize(UINT nType, int cx, int cy) {
    CWnd::OnSize(nType, cx, cy);
    GetClientRect(m_rectClient);
    RecalcLayout();
}
