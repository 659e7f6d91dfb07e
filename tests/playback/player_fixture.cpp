// SPDX-License-Identifier: MIT
#include "tests/playback/player_fixture.h"

#include "platform/framework/window.h"
#include "res/resource.h"

TestMainWindow::TestMainWindow() {
    Create(IDD_PLAYER_DIALOG);
    m_frame.SubclassWindow(windows::Find(m_hWnd)->children.back()->handle);
    panel = new CMessagePanel(&m_frame);
    panel->ShowPanel();
}

LRESULT TestMainWindow::WindowProc(UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_DESTROY) panel = nullptr;
    if (message == WM_PLAYBACK_ENDED) {
        ++ended;
        panel->Stop();
    }
    if (message == WM_PLAYBACK_INTERRUPTED) plays.push_back(wParam != 0);
    return CDialog::WindowProc(message, wParam, lParam);
}

int PlayerTest::s_ownThreads = 0;

void PlayerTest::SetUp() {
    if (s_ownThreads == 0) s_ownThreads = watch::ThreadCount();
    m_main = std::make_unique<TestMainWindow>();
    m_app.m_pMainWnd = m_main.get();
    ASSERT_NE(m_main->panel->m_hWnd, nullptr);
}

void PlayerTest::TearDown() {
    m_main->DestroyWindow();
    m_main.reset();
}

BOOL PlayerTest::Open(const MessageBuilder& message, const std::string& name) {
    message.Write(m_folder.Path(name));
    if (!Panel().Open(m_folder.Path(name))) return FALSE;
    Panel().Stop();
    return TRUE;
}

std::string PlayerTest::Text(int control) const {
    CString text;
    Panel().GetDlgItem(control)->GetWindowText(text);
    return text.Str();
}

HWND PlayerTest::ChildOfFrame(size_t index) const {
    const HWND frame = Panel().GetDlgItem(IDC_PICTURE_FRAME)->m_hWnd;
    return windows::Find(frame)->children.at(index)->handle;
}

COLORREF PlayerTest::Pixel(HWND window, int x, int y) const {
    return windows::SurfaceOf(window)->pixel(x, y);
}

bool PlayerTest::Hear(int blocks) {
    for (const int end = BlocksHeard() + blocks; BlocksHeard() < end;) {
        const int before = BlocksHeard();
        const auto heard = [&] {
            m_sound->Advance(20);
            HeadlessToolkit::Pump();
            return BlocksHeard() > before;
        };
        if (!HeadlessToolkit::PumpUntil(heard, 20000)) return false;
    }
    return true;
}

bool PlayerTest::HearToTheEnd() {
    const int end = m_main->ended + 1;
    return HeadlessToolkit::PumpUntil(
        [&] {
            for (int i = 0; i < 50 && m_main->ended < end; ++i) {
                m_sound->Advance(20);
                HeadlessToolkit::Pump();
            }
            return m_main->ended == end;
        },
        20000);
}

void PlayerTest::WaitForReader() {
    // Asleep several times in a row: a thread also sleeps where it waits for a lock.
    int asleep = 0;
    EXPECT_TRUE(HeadlessToolkit::PumpUntil([&] {
        asleep = watch::OthersSleep() ? asleep + 1 : 0;
        return asleep == 5;
    }));
}

bool PlayerTest::WaitForSound() {
    return watch::Eventually([this] { return m_sound->BytesQueued() != 0; }, std::chrono::seconds(10));
}
