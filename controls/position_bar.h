// SPDX-License-Identifier: MIT
// The bar that shows how far a message has been played, and by which a person moves in it.
#pragma once

#include <cstdint>

#include "platform/framework/accessible_value.h"
#include "platform/framework/afxcmn.h"

// Sent by the bar to its parent, which decides where the message goes. A frame in wParam is one of the bar's,
// from 0 to its range.
//
// The pointer holds the head at the frame wParam: once when it presses, then at each other frame.
inline constexpr UINT WM_POSITION_DRAGGED = WM_USER + 301;
// The head was let go at the frame wParam, and stays there until the parent says otherwise.
inline constexpr UINT WM_POSITION_RELEASED = WM_USER + 302;
// Another window took the mouse: the drag has led nowhere, and the bar shows its position again.
inline constexpr UINT WM_POSITION_DRAG_CANCELLED = WM_USER + 303;
// The wheel asks to move by lParam frames, forwards or back.
inline constexpr UINT WM_POSITION_MOVE_BY = WM_USER + 304;

// A band from a tail to a head, both counted in frames of 20 ms. The tail follows once the head has reached
// the lead, so that the band then keeps its length and slides; where that length is less than
// kLeastBand pixels, the band is drawn so wide. The pointer resting on the bar is told the time under it.
//
// Counts of frames may be as large as 2^32 - 1. UI thread.
class CPositionBar : public CStatic, public AccessibleValue {
public:
    CPositionBar();
    ~CPositionBar() override = default;

    // Frames that the whole bar stands for; with 0 or fewer the bar shows no band and takes no press. May
    // grow while the bar is in use. No repaint.
    void SetRange(std::int64_t nFrames);
    // Head at and beyond which the tail moves. No repaint.
    void SetLead(int nFrames);
    // Moves the band by one frame. When that moves an edge of it by a pixel, the bar is repainted before the
    // call returns; so it is by SetPosition. While the pointer holds the head neither is seen.
    //
    // With bMayWait one pixel waits for ShowBand, so that it can fall together with something else.
    void StepIt(BOOL bMayWait = FALSE);
    void ShowBand();
    // Puts the head at the frame, or the nearer end of the bar, and the tail where steps would have left it.
    void SetPosition(std::int64_t nFrame);
    std::int64_t GetPosition() const { return m_nHead; }
    // Takes the band back to the start. A drag ends without a word.
    void Reset();
    // The time of a frame and of the whole, as a person reads it: "1:02 of 10:24".
    CString TextAt(std::int64_t nFrame) const;

    BOOL PreTranslateMessage(MSG* pMsg) override;

    // For assistive programs: seconds. One that is set is told to the parent as if the head had been let go
    // there. Announced by SetPosition and Reset, not by steps; the panel announces it at a pause.
    AccessibleValue* GetAccessibleValue() override { return this; }
    double Value() const override;
    double MaximumValue() const override;
    CString ValueText() const override;
    void SetValue(double fSeconds) override;

    static constexpr int kLeastBand = 4;

protected:
    DECLARE_MESSAGE_MAP()
    void PreSubclassWindow() override;
    afx_msg void OnPaint();
    afx_msg void OnLButtonDown(UINT nFlags, CPoint point);
    afx_msg void OnLButtonDblClk(UINT nFlags, CPoint point);
    afx_msg void OnLButtonUp(UINT nFlags, CPoint point);
    afx_msg void OnMouseMove(UINT nFlags, CPoint point);
    afx_msg void OnCaptureChanged(CWnd* pWnd);
    afx_msg BOOL OnMouseWheel(UINT nFlags, short zDelta, CPoint point);
    afx_msg void OnSetFocus(CWnd* pOldWnd);
    afx_msg void OnKillFocus(CWnd* pNewWnd);

private:
    // Edges in pixels.
    struct Band {
        int nTail;
        int nHead;
        bool operator==(const Band&) const = default;
    };

    // SetPosition without a word to assistive programs, who hear of it when the parent answers.
    void MoveHead(std::int64_t nFrame);
    std::int64_t TailOf(std::int64_t nHead) const;
    std::int64_t FrameAt(int x) const;
    int PixelOf(std::int64_t nFrame, int nWidth) const;
    Band BandIn(int nWidth) const;
    BOOL IsFarOff() const;
    void DragTo(int x);
    void Tell(UINT nMessage, std::int64_t nFrame) const;

    std::int64_t m_nRange = 100;
    int m_nLead = 20;
    int m_nStep = 1;
    std::int64_t m_nHead = 0;
    std::int64_t m_nTail = 0;
    COLORREF m_clrBackground;
    COLORREF m_clrBar = RGB(0, 0xFF, 0);
    Band m_painted = {-1, -1};    // as last painted; -1: never
    std::int64_t m_nDragged = 0;  // where the pointer holds the head
    BOOL m_bDragging = FALSE;
    int m_nWheel = 0;  // turned, but not yet by a whole frame; frames times WHEEL_DELTA
    BOOL m_bFocused = FALSE;
    CToolTipCtrl m_toolTip;
};
