// Windows for tests: an application whose start runs the tests, and a place to put controls.
#pragma once

#include <gtest/gtest.h>

#include "platform/framework/afxcmn.h"

namespace ui_test {

inline constexpr COLORREF kScribble = RGB(0x12, 0x34, 0x56);

// A dialog on the (virtual) screen. Controls made as its children lie over its own.
class HostDialog : public CDialog {
public:
    explicit HostDialog(UINT templateId);
    ~HostDialog() override { DestroyWindow(); }
};

// A child window without a class of its own, to stand for a dialog's control of any size.
BOOL MakeControl(CWnd& control, CWnd& parent, const RECT& rect);

COLORREF PixelOf(CWnd& window, int x, int y);

// Overpaints the window's picture behind its back, so that what a repaint touches can be told from what it
// leaves.
void Scribble(CWnd& window);
bool IsScribbled(CWnd& window, int x, int y);

// Runs the message loop until nothing waits.
void Pump();

}  // namespace ui_test
