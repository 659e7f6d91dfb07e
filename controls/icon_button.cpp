// SPDX-License-Identifier: MIT
#include "controls/icon_button.h"

#include "platform/framework/afxicon.h"

namespace {

constexpr int kTipAutoPopMs = 2000;
constexpr int kTipInitialMs = 100;
constexpr int kTipReshowMs = 100;
constexpr UINT_PTR kTipTool = 1;

}  // namespace

BEGIN_MESSAGE_MAP(CIconButton, CButton)
ON_WM_CAPTURECHANGED()
ON_WM_SETCURSOR()
ON_WM_KILLFOCUS()
ON_WM_MOUSEMOVE()
END_MESSAGE_MAP()

CIconButton::~CIconButton() {
    m_toolTip.DestroyToolTipCtrl();
    DestroyWindow();
    PutIcon(m_hHoverIcon, nullptr);
    PutIcon(m_hNormalIcon, nullptr);
    if (m_hCursor != nullptr) DestroyCursor(m_hCursor);
}

// Puts an icon into one of the two slots and releases the one before, unless the other slot still has it.
void CIconButton::PutIcon(HICON& slot, HICON hIcon) {
    const HICON hPrev = slot;
    slot = hIcon;
    if (hPrev != nullptr && hPrev != m_hHoverIcon && hPrev != m_hNormalIcon) DestroyIcon(hPrev);
}

BOOL CIconButton::SetIcons(UINT nHoverIcon, UINT nNormalIcon) {
    PutIcon(m_hHoverIcon, LoadImage(LOWORD(nHoverIcon), IMAGE_ICON));
    if (m_hHoverIcon == nullptr) return FALSE;
    PutIcon(m_hNormalIcon, nNormalIcon == 0 ? m_hHoverIcon : LoadImage(LOWORD(nNormalIcon), IMAGE_ICON));
    if (m_hNormalIcon == nullptr) return FALSE;

    ICONINFO info = {};
    if (GetIconInfo(m_hHoverIcon, &info)) {
        m_cxIcon = static_cast<BYTE>(2 * info.xHotspot);
        m_cyIcon = static_cast<BYTE>(2 * info.yHotspot);
        DeleteObject(info.hbmMask);
        DeleteObject(info.hbmColor);
    }
    RepaintNow();
    return TRUE;
}

BOOL CIconButton::SetBtnCursor(UINT nCursor) {
    const HCURSOR hPrev = m_hCursor;
    m_hCursor = LoadImage(LOWORD(nCursor), IMAGE_CURSOR);
    if (hPrev != nullptr) DestroyCursor(hPrev);
    return m_hCursor != nullptr ? TRUE : FALSE;
}

BOOL CIconButton::SetTooltipText(UINT nString) {
    CString text;
    if (!text.LoadString(nString) || text.IsEmpty()) return FALSE;
    CreateToolTip();
    if (m_toolTip.GetToolCount() == 0) {
        CRect client;
        GetClientRect(client);
        m_toolTip.AddTool(this, text, client, kTipTool);
    }
    m_toolTip.UpdateTipText(text, this, kTipTool);
    SetAccessibleName(text);
    m_toolTip.Activate(TRUE);
    return TRUE;
}

void CIconButton::SetLatched(BOOL bLatched) {
    m_bLatched = bLatched;
    RepaintNow();
}

void CIconButton::RepaintNow() {
    RedrawWindow(nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_UPDATENOW);
}

void CIconButton::CreateToolTip() {
    if (m_toolTip.GetSafeHwnd() != nullptr) return;
    m_toolTip.Create(this);
    m_toolTip.SetDelayTime(TTDT_AUTOPOP, kTipAutoPopMs);
    m_toolTip.SetDelayTime(TTDT_INITIAL, kTipInitialMs);
    m_toolTip.SetDelayTime(TTDT_RESHOW, kTipReshowMs);
    m_toolTip.Activate(TRUE);
}

void CIconButton::PreSubclassWindow() {
    constexpr DWORD kButtonStyles = 0xFF;
    const DWORD style = (GetStyle() & kButtonStyles) | BS_OWNERDRAW;
    SendMessage(BM_SETSTYLE, style, TRUE);
    CButton::PreSubclassWindow();
}

BOOL CIconButton::PreTranslateMessage(MSG* pMsg) {
    CreateToolTip();
    m_toolTip.RelayEvent(pMsg);
    return CButton::PreTranslateMessage(pMsg);
}

LRESULT CIconButton::DefWindowProc(UINT message, WPARAM wParam, LPARAM lParam) {
    // A quick second click presses the button like the first.
    if (message == WM_LBUTTONDBLCLK) message = WM_LBUTTONDOWN;
    return CButton::DefWindowProc(message, wParam, lParam);
}

void CIconButton::DrawItem(DRAWITEMSTRUCT* pItem) {
    CDC& dc = *pItem->dc;
    CRect rect = pItem->rcItem;
    const bool pressed = m_bLatched || (pItem->itemState & ODS_SELECTED) != 0;
    const bool disabled = (pItem->itemState & ODS_DISABLED) != 0;

    CBrush face(GetSysColor(m_bLatched ? COLOR_GRAYTEXT : COLOR_BTNFACE));
    dc.FillRect(rect, &face);
    if (pressed) {
        dc.Draw3dRect(rect, GetSysColor(COLOR_BTNSHADOW), GetSysColor(COLOR_BTNHIGHLIGHT));
    } else if (m_bHover) {
        dc.Draw3dRect(rect, GetSysColor(COLOR_BTNHIGHLIGHT), GetSysColor(COLOR_BTNSHADOW));
    }

    CPoint at(rect.left + (rect.right - m_cxIcon - rect.left) / 2,
              rect.top + (rect.bottom - m_cyIcon - rect.top) / 2);
    const SIZE size = {rect.right - at.x, rect.bottom - at.y};
    if (pressed) {
        ++at.x;
        ++at.y;
    }
    const HICON hIcon = (m_bHover || pressed) ? m_hHoverIcon : m_hNormalIcon;
    if (hIcon != nullptr) dc.DrawState(at, size, hIcon, disabled ? DST_ICON | DSS_DISABLED : DST_ICON);
}

void CIconButton::OnMouseMove(UINT nFlags, CPoint point) {
    CButton::OnMouseMove(nFlags, point);
    const bool dragging = (nFlags & MK_LBUTTON) != 0;
    // Dragging onto the button does not light it.
    if (dragging && !m_bHover) return;

    if (GetCapture() != this && GetActiveWindow() != nullptr &&
        (GetOwner() != nullptr || GetParent() != nullptr)) {
        m_bHover = TRUE;
        SetCapture();
        Invalidate();
        return;
    }
    ClientToScreen(&point);
    if (WindowFromPoint(point) == this) return;
    EndHover();
    if (!dragging) ReleaseCapture();
}

void CIconButton::EndHover() {
    if (!m_bHover) return;
    m_bHover = FALSE;
    Invalidate();
}

void CIconButton::OnCaptureChanged(CWnd* pWnd) {
    // Losing the capture, as at the end of a click, leaves the button lit: the mouse is still over it.
    if (m_bHover) {
        ReleaseCapture();
        Invalidate();
    }
    CButton::OnCaptureChanged(pWnd);
}

void CIconButton::OnKillFocus(CWnd* pNewWnd) {
    CButton::OnKillFocus(pNewWnd);
    EndHover();
}

BOOL CIconButton::OnSetCursor(CWnd* pWnd, UINT nHitTest, UINT message) {
    if (m_hCursor == nullptr) return CButton::OnSetCursor(pWnd, nHitTest, message);
    SetCursor(m_hCursor);
    return TRUE;
}
