// SPDX-License-Identifier: MIT
// The volume dialog's meter.
#pragma once

#include "platform/framework/afxcmn.h"

// A level as a column of segments, green at the bottom to red at the top. UI thread.
class CLevelMeter : public CStatic {
public:
    CLevelMeter() = default;
    ~CLevelMeter() override = default;

    // The levels that stand for nothing lit and all lit. Refused unless nHigh >= nLow >= 0. No repaint.
    void SetRange(int nLow, int nHigh);
    // Shows the level; one outside the range is ignored.
    void SetPos(int nPosition);
    // Paints the meter on the target, or, when it is null, on the window at once.
    virtual void Draw(CDC* pTarget);

protected:
    DECLARE_MESSAGE_MAP()
    afx_msg void OnPaint();

private:
    int LitSegments() const;

    COLORREF m_clrBackground = RGB(0xC0, 0xC0, 0xC0);
    int m_nLow = 0;
    int m_nHigh = 100;
    int m_nSegments = 10;
    int m_nPosition = 0;
};
