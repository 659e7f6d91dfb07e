// The player's windows in a test: an application whose start runs the tests, on a sound driver whose clock
// the test moves.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>

#include "app/player_app.h"
#include "app/player_dlg.h"
#include "platform/sound/simulated_wave_driver.h"

namespace app_test {

// Runs the message loop until nothing waits.
void Pump();

// The full path of a sample message.
std::string Sample(const std::string& name);

// The modal window that is up, as a person would tell it.
struct Modal {
    std::string title;
    std::string text;  // of a message box
    std::function<void()> close;
};

// Does something that brings a modal window up, lets the test do something under it, and waits for the window
// to go. Nothing under it: the window is closed. Fails when none came up.
Modal WithModal(const std::function<void()>& action, const std::function<void(const Modal&)>& underIt = {});

// Whether an assistive program finds a control of this name.
bool HasControlNamed(const std::string& name);

class PlayerTest : public testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    void Command(UINT id) { SendMessage(m_hWnd, WM_COMMAND, id, 0); }
    // Lets the sound run on, a block at a time.
    void Play(int milliseconds);
    std::string Title() const;
    // What button 1000 offers.
    std::string Face() const;

    std::shared_ptr<SimulatedWaveDriver> m_sound = std::make_shared<SimulatedWaveDriver>();
    CPlayerDlg* m_pDlg = nullptr;
    HWND m_hWnd = nullptr;
};

}  // namespace app_test
