#include "tests/panel/player_fixture.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <thread>

#include "platform/framework/window.h"
#include "platform/sound/simulated_mixer_driver.h"
#include "res/player_resources.h"
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
    return CDialog::WindowProc(message, wParam, lParam);
}

void PlayerTest::SetUpTestSuite() {
    UsePlayerResources();
}

void PlayerTest::SetUp() {
    m_before = SetWaveDriver(m_sound);
    SetMixerDriver(std::make_shared<SimulatedMixerDriver>());
    m_app = std::make_unique<CWinApp>();
    m_main = std::make_unique<TestMainWindow>();
    m_app->m_pMainWnd = m_main.get();
    ASSERT_NE(m_main->panel->m_hWnd, nullptr);
}

void PlayerTest::TearDown() {
    m_main->DestroyWindow();
    m_main.reset();
    m_app.reset();
    SetMixerDriver(nullptr);
    SetWaveDriver(m_before);
}

BOOL PlayerTest::Open(const MessageBuilder& message, const std::string& name) {
    message.Write(m_folder.Path(name));
    if (!m_main->panel->Open(m_folder.Path(name))) return FALSE;
    m_main->panel->Stop();
    return TRUE;
}

std::string PlayerTest::Text(int control) const {
    CString text;
    m_main->panel->GetDlgItem(control)->GetWindowText(text);
    return text.Str();
}

HWND PlayerTest::ChildOfFrame(size_t index) const {
    const HWND frame = m_main->panel->GetDlgItem(IDC_PICTURE_FRAME)->m_hWnd;
    return windows::Find(frame)->children.at(index)->handle;
}

COLORREF PlayerTest::Pixel(HWND window, int x, int y) const {
    return windows::SurfaceOf(window)->pixel(x, y);
}

bool PlayerTest::Hear(int blocks) {
    using Clock = std::chrono::steady_clock;
    const int end = BlocksHeard() + blocks;
    auto progress = Clock::now();
    while (BlocksHeard() < end) {
        const int before = BlocksHeard();
        m_sound->Advance(20);
        HeadlessToolkit::Pump();
        if (BlocksHeard() != before) {
            progress = Clock::now();
        } else {
            if (Clock::now() - progress > std::chrono::seconds(20)) return false;
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
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
    size_t written;
    do {
        written = m_sound->BlocksWritten();
        HeadlessToolkit::PumpFor(30);
    } while (m_sound->BlocksWritten() != written);
}

bool PlayerTest::WaitForSound() {
    for (int waitedMs = 0; m_sound->BytesQueued() == 0; ++waitedMs) {
        if (waitedMs == 10000) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

int PlayerTest::Threads() const {
    const std::filesystem::directory_iterator tasks("/proc/self/task");
    return static_cast<int>(std::distance(begin(tasks), end(tasks)));
}
