// A main window with the message panel in it, over a toolkit without a screen and a sound card without sound.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "platform/framework/afxcmn.h"
#include "platform/framework/afxwin.h"
#include "platform/framework/surface.h"
#include "platform/sound/simulated_wave_driver.h"
#include "playback/message_panel.h"
#include "tests/support/headless_toolkit.h"
#include "tests/support/message_builder.h"

class TestMainWindow : public CDialog {
public:
    TestMainWindow();
    CMessagePanel* panel = nullptr;  // null once it is gone
    int ended = 0;                   // WM_PLAYBACK_ENDED received
    LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override;

private:
    CStatic m_frame;
};

class PlayerTest : public testing::Test {
protected:
    static void SetUpTestSuite();
    void SetUp() override;
    void TearDown() override;

    // Writes the message and opens it, as the main window does: opened, then stopped.
    BOOL Open(const MessageBuilder& message, const std::string& name = "message.trv");
    std::string Text(int control) const;
    BOOL IsShown(int control) const { return m_main->panel->GetDlgItem(control)->IsWindowVisible(); }
    HWND ChildOfFrame(size_t index) const;  // 0 waveform, 1 wave device, 2 renderer
    COLORREF Pixel(HWND window, int x, int y) const;

    // Blocks heard since the sound's record was last forgotten.
    int BlocksHeard() const { return static_cast<int>(m_sound->HeardCount() / kSpeechFrameSamples); }
    // Lets the clock run until so many blocks more have been heard, waiting for the reader where it must.
    bool Hear(int blocks);
    // Lets the clock run until the message has ended once more.
    bool HearToTheEnd();
    // Waits until the reader has filled the queue or read everything: nothing more is written.
    void WaitForReader();
    // Waits until the reader has queued sound, without letting any message through.
    bool WaitForSound();
    int Threads() const;

    HeadlessToolkit m_toolkit;
    std::shared_ptr<SimulatedWaveDriver> m_sound = std::make_shared<SimulatedWaveDriver>();
    std::shared_ptr<WaveDriver> m_before;
    TestFolder m_folder;
    std::unique_ptr<CWinApp> m_app;
    std::unique_ptr<TestMainWindow> m_main;
};
