// The bar that shows how far a message has been played.
#pragma once

#include "platform/framework/afxcmn.h"

// A band from a tail to a head, both counted in frames. The head moves by one per step; the tail follows once
// the head has reached the lead, so that the band then keeps its length and slides. UI thread.
class CPositionBar : public CStatic {
public:
    CPositionBar();
    ~CPositionBar() override = default;

    // Frames that the whole bar stands for; with 0 or fewer the bar shows no band. No repaint.
    void SetRange(int nFrames);
    // Head at and beyond which the tail moves. No repaint.
    void SetLead(int nFrames);
    // Moves the band by one frame. When that moves an edge of it by a pixel, the bar is repainted before the
    // call returns.
    void StepIt();
    // Takes the band back to the start.
    void Reset();

protected:
    DECLARE_MESSAGE_MAP()
    afx_msg void OnPaint();

private:
    int Advanced(int nPosition) const;
    int PixelOf(int nPosition, int nWidth) const;

    int m_nRange = 100;
    int m_nLead = 20;
    int m_nStep = 1;
    int m_nHead = 0;
    int m_nTail = 0;
    COLORREF m_clrBackground;
    COLORREF m_clrBar = RGB(0, 0xFF, 0);
    int m_nPaintedHead = -1;  // edges of the band as last painted, pixels; -1: never painted
    int m_nPaintedTail = -1;
};
