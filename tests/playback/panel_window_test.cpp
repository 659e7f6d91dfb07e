// SPDX-License-Identifier: MIT
// What the panel's windows show, and their end.
#include "platform/framework/window.h"
#include "res/resource.h"
#include "tests/playback/player_fixture.h"

namespace {

using PanelWindow = PlayerTest;

TEST_F(PanelWindow, MeasuresThatPixelsDependOn) {
    const auto client = [](const CWnd* window) {
        CRect rect;
        window->GetClientRect(rect);
        return std::pair(rect.Width(), rect.Height());
    };
    EXPECT_EQ(client(Panel().GetDlgItem(IDC_POSITION_BAR)), std::pair(335 - 4, 18 - 4));
    EXPECT_EQ(client(Panel().GetDlgItem(IDC_PICTURE_FRAME)), std::pair(335 - 4, 255 - 4));
    EXPECT_EQ(client(CWnd::FromHandle(ChildOfFrame(0))), std::pair(331 - 2, 251 - 2));
    EXPECT_EQ(client(CWnd::FromHandle(ChildOfFrame(2))), std::pair(320, 240));
}

TEST_F(PanelWindow, ClosingTheWindowEndsWhateverPlays) {
    m_main->DestroyWindow();
    const std::pair<const char*, std::function<void()>> cases[] = {
        {"opened", [this] { Panel().Stop(); }},
        {"playing", [] {}},
        {"heard", [this] { Hear(20), m_sound->Advance(200); }},
        {"paused", [this] { Hear(20), Panel().Pause(); }},
        {"draining", [this] { WaitForReader(); }},
        {"closed", [this] { Panel().Close(); }},
    };
    for (const int rate : {0, 5}) {
        for (const auto& [name, act] : cases) {
            SCOPED_TRACE(name);
            m_main = std::make_unique<TestMainWindow>();
            m_app.m_pMainWnd = m_main.get();
            MessageBuilder message(rate, 100);
            for (int i = 0; i < 10; ++i) message.Picture().Speech(1);
            ASSERT_TRUE(Open(message));
            Panel().Play();
            act();
            m_main->DestroyWindow();
            EXPECT_TRUE(windows::All().empty());
            EXPECT_FALSE(m_sound->IsOpen());
            EXPECT_TRUE(NoThreadIsLeft());
            HeadlessToolkit::Pump();
            EXPECT_EQ(m_main->ended, 0);
        }
    }
}

TEST_F(PanelWindow, PanelDestroysItselfOnOKAndCancel) {
    for (const int command : {IDOK, IDCANCEL}) {
        m_main = std::make_unique<TestMainWindow>();
        ASSERT_TRUE(Open(MessageBuilder(3, 100).Speech(10)));
        Panel().Play();
        const HWND panel = Panel().m_hWnd;
        ::SendMessage(panel, WM_COMMAND, static_cast<WPARAM>(command), 0);
        EXPECT_FALSE(IsWindow(panel));
        EXPECT_FALSE(m_sound->IsOpen());
        m_main->DestroyWindow();
    }
}

}  // namespace
