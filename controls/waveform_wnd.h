// SPDX-License-Identifier: MIT
// The picture of a voice-only message: a trace that scrolls over a grid.
#pragma once

#include "platform/framework/afxtempl.h"
#include "platform/framework/afxwin.h"

// One value is one point of the trace. Values may be queued ahead by another thread; each is drawn when
// ShowNextValue is called for it. Values outside the range are drawn at its edges.
//
// Everything but QueueValue belongs to the UI thread. Only Create reports a failure.
class CWaveformWnd : public CWnd {
public:
    CWaveformWnd();
    ~CWaveformWnd() override;

    // Creates the window, with a static edge. rect is the outer rectangle in the parent's client coordinates.
    // The canvases take the client size of the first painting and keep it. FALSE when the window cannot be
    // created.
    virtual BOOL Create(DWORD dwStyle, const RECT& rect, CWnd* pParent, UINT nID);

    // Values shown at the bottom and at the top. Refused unless fUpper >= fLower and fUpper >= 0. Without
    // bRedraw the trace keeps the old scale until the window's size changes.
    void SetRange(float fLower, float fUpper, BOOL bRedraw);
    // Pixels that the trace moves left per value.
    void SetShift(int nPixels);
    // A colour that is new repaints the grid and clears the trace.
    void SetBackgroundColor(COLORREF color);
    void SetGridColor(COLORREF color);
    void SetPlotColor(COLORREF color);
    COLORREF GetBackgroundColor() const { return m_clrBackground; }

    // Draws a value at once.
    void AppendPoint(float fValue);
    // Appends a value to those that wait to be drawn. Any thread; allocates nothing while fewer than
    // kQueueReserve values wait.
    void QueueValue(float fValue);
    // Draws the oldest waiting value, if there is one.
    void ShowNextValue();
    // Drops the values that wait to be drawn.
    void ClearQueue();
    // Clears the trace; the next segment still starts at the last value drawn, and waiting values stay.
    void Reset();
    // How many values the plot shows at once, the one where its first segment starts included.
    int GetVisibleCount() const;
    // Clears the trace and draws values as if each had been appended, oldest first; of more than can be seen
    // the last are drawn. Waiting values stay.
    void ShowValues(const float* pValues, int nCount);

    // More than the values of the sound that the player ever reads ahead.
    static constexpr int kQueueReserve = 300;

protected:
    DECLARE_MESSAGE_MAP()
    afx_msg void OnPaint();
    afx_msg void OnSize(UINT nType, int cx, int cy);
    afx_msg LRESULT OnScaleChanged(WPARAM wParam, LPARAM lParam);

private:
    // A picture kept between paints.
    struct Canvas {
        CDC dc;
        CBitmap bitmap;
        CBitmap* pPrevBitmap = nullptr;
        bool Exists() const { return pPrevBitmap != nullptr; }
        void Create(CDC* pWindowDC, int width, int height);
        void Free();
    };

    void RecalcLayout();
    void RedrawAll();
    void CreateCanvases();
    void DrawCanvases();
    void DrawGrid();
    void DrawShown();
    float InRange(float fValue) const;
    int PlotY(float fValue) const;

    float m_fLower = 0.0F;
    float m_fUpper = 100.0F;
    float m_fScale = 0.0F;  // pixels per unit of value
    float m_fLast = 0.0F;   // last value drawn, where the next segment starts; 0: none yet
    int m_nShift = 4;
    int m_nHalfShift = 2;
    int m_nShiftPlusHalf = 6;
    COLORREF m_clrBackground = RGB(0, 0, 0);
    COLORREF m_clrGrid = RGB(0x80, 0x80, 0x80);
    COLORREF m_clrPlot = RGB(0xFF, 0, 0);
    CRect m_rectClient;
    CRect m_rectPlot;
    CPen m_penPlot;
    Canvas m_grid;                 // background, frame and grid
    Canvas m_trace;                // the trace alone, on the background colour
    CArray<float, float> m_shown;  // what the trace is drawn of, to draw it again in another scale
    CArray<float, float> m_queue;
    CCriticalSection m_queueLock;
};
