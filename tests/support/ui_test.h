// SPDX-License-Identifier: MIT
// Windows in tests. A program linked with ui_test_main runs its tests with the real toolkit on the off-screen
// platform, with the player's resources and without an application object: who needs one makes it.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <string>

#include "platform/framework/afxcmn.h"

namespace ui_test {

// Runs the message loop until nothing waits.
void Pump();
// Runs it for so long.
void PumpFor(int milliseconds);
// Runs it until the condition holds: true, or false when the time is over first.
bool PumpUntil(const std::function<bool()>& condition, int milliseconds = 10000);

// A dialog on the (virtual) screen. Controls made as its children lie over its own.
class HostDialog : public CDialog {
public:
    explicit HostDialog(UINT templateId);
    ~HostDialog() override { DestroyWindow(); }
};

// A child window without a class of its own, to stand for a dialog's control of any size.
BOOL MakeControl(CWnd& control, CWnd& parent, const RECT& rect);

std::string TextOf(const CWnd& window);
COLORREF PixelOf(CWnd& window, int x, int y);

// Overpaints the window's picture behind its back, so that what a repaint touches can be told from what it
// leaves.
void Scribble(CWnd& window);
bool IsScribbled(CWnd& window, int x, int y);

// Icons and cursors loaded since it was made that are not released: handles count up.
class IconWatch {
public:
    int Live() const;

private:
    static std::uintptr_t NextHandle();
    std::uintptr_t m_first = NextHandle();
};

// Whether an assistive program finds a control of this name.
bool HasControlNamed(const std::string& name);

// The modal window that is up, as a person would tell it.
struct Modal {
    std::string title;
    std::string text;  // of a message box
    std::function<void()> close;
};

// Does something that brings a modal window up, lets the test do something under it, and waits for the window
// to go. Nothing under it: the window is closed. Fails when none came up.
Modal WithModal(const std::function<void()>& action, const std::function<void(const Modal&)>& underIt = {});

}  // namespace ui_test
