// SPDX-License-Identifier: MIT
// The flat push button of the player's tool row.
#pragma once

#include "platform/framework/afxcmn.h"

// Draws itself: a face with an icon on it, a raised edge while the mouse is over it, a sunken edge while it
// is pressed or latched. Has a cursor and a tool tip of its own; the tip's text is its accessible name too.
// Owns the icons and the cursor that it loads. UI thread.
class CIconButton : public CButton {
public:
    CIconButton() = default;
    ~CIconButton() override;

    // Loads the icon shown under the mouse and while pressed or latched, and the one shown otherwise (0: the
    // same), in place of those before. FALSE when one cannot be loaded: its state then shows no icon.
    BOOL SetIcons(UINT nHoverIcon, UINT nNormalIcon = 0);
    // Loads the cursor shown over the button. FALSE when it cannot be loaded: the default one is shown.
    BOOL SetBtnCursor(UINT nCursor);
    // Takes the tip from the string table. FALSE when the string is missing or empty: the tip stays.
    BOOL SetTooltipText(UINT nString);
    // A latched button looks pressed on a darker face, whatever its real state.
    void SetLatched(BOOL bLatched);

    BOOL PreTranslateMessage(MSG* pMsg) override;
    LRESULT DefWindowProc(UINT message, WPARAM wParam, LPARAM lParam) override;
    void DrawItem(DRAWITEMSTRUCT* pItem) override;

protected:
    DECLARE_MESSAGE_MAP()
    void PreSubclassWindow() override;
    afx_msg void OnCaptureChanged(CWnd* pWnd);
    afx_msg BOOL OnSetCursor(CWnd* pWnd, UINT nHitTest, UINT message);
    afx_msg void OnKillFocus(CWnd* pNewWnd);
    afx_msg void OnMouseMove(UINT nFlags, CPoint point);

private:
    void PutIcon(HICON& slot, HICON hIcon);
    void RepaintNow();
    void CreateToolTip();
    void EndHover();

    HICON m_hHoverIcon = nullptr;
    HICON m_hNormalIcon = nullptr;  // may be the hover icon
    BYTE m_cyIcon = 0;
    BYTE m_cxIcon = 0;
    CToolTipCtrl m_toolTip;
    HCURSOR m_hCursor = nullptr;
    BOOL m_bHover = FALSE;
    BOOL m_bLatched = FALSE;
};
