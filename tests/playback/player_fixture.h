// SPDX-License-Identifier: MIT
// A main window with the message panel in it, over a toolkit without a screen and a sound card without sound.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "platform/framework/afxcmn.h"
#include "platform/framework/afxwin.h"
#include "platform/framework/surface.h"
#include "playback/message_panel.h"
#include "tests/support/headless_toolkit.h"
#include "tests/support/message_builder.h"
#include "tests/support/simulated_sound.h"
#include "tests/support/test_files.h"
#include "tests/support/watch.h"

class TestMainWindow : public CDialog {
public:
    TestMainWindow();
    CMessagePanel* panel = nullptr;  // null once it is gone
    int ended = 0;                   // WM_PLAYBACK_ENDED received
    std::vector<bool> plays;         // WM_PLAYBACK_INTERRUPTED received
    LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override;

private:
    CStatic m_frame;
};

class PlayerTest : public testing::Test, protected SimulatedSound {
protected:
    void SetUp() override;
    void TearDown() override;

    // Writes the message and opens it, as the main window does: opened, then stopped.
    BOOL Open(const MessageBuilder& message, const std::string& name = "message.trv");
    CMessagePanel& Panel() const { return *m_main->panel; }
    std::string Text(int control) const;
    BOOL IsShown(int control) const { return Panel().GetDlgItem(control)->IsWindowVisible(); }
    HWND ChildOfFrame(size_t index) const;  // 0 waveform, 1 wave device, 2 renderer
    COLORREF Pixel(HWND window, int x, int y) const;
    COLORREF MidPixel() const { return Pixel(ChildOfFrame(2), 160, 120); }  // of the picture

    // Blocks heard since the sound's record was last forgotten.
    int BlocksHeard() const { return static_cast<int>(m_sound->HeardCount() / kSpeechFrameSamples); }
    // Lets the clock run until so many blocks more have been heard, waiting for the reader where it must.
    bool Hear(int blocks);
    // Lets the clock run until the message has ended once more.
    bool HearToTheEnd();
    // Waits until all other threads sleep: the reader has filled the queue or read everything.
    void WaitForReader();
    // Waits until the reader has queued sound, without letting any message through.
    bool WaitForSound();
    // Whether no thread of the player is left. The system may list one a little longer than it runs.
    bool NoThreadIsLeft() const {
        return watch::Eventually([] { return watch::ThreadCount() == s_ownThreads; },
                                 std::chrono::seconds(5));
    }

    HeadlessToolkit m_toolkit;
    TestFolder m_folder;
    CWinApp m_app;
    std::unique_ptr<TestMainWindow> m_main;

private:
    static int s_ownThreads;  // of the test itself
};
