// What the panel's windows show, and their end.
#include <chrono>

#include "platform/framework/surface.h"
#include "platform/framework/window.h"
#include "res/resource.h"
#include "tests/panel/player_fixture.h"

namespace {

class PanelWindow : public PlayerTest {
protected:
    // Pixels of a colour in the window's picture.
    static int Count(HWND window, COLORREF color) {
        const std::shared_ptr<Surface> surface = windows::SurfaceOf(window);
        int count = 0;
        for (int y = 0; y < surface->height(); ++y)
            for (int x = 0; x < surface->width(); ++x) count += surface->pixel(x, y) == color;
        return count;
    }
};

TEST_F(PanelWindow, MeasuresThatPixelsDependOn) {
    const auto client = [](const CWnd* window) {
        CRect rect;
        window->GetClientRect(rect);
        return std::pair(rect.Width(), rect.Height());
    };
    EXPECT_EQ(client(m_main->panel->GetDlgItem(IDC_POSITION_BAR)), std::pair(335 - 4, 18 - 4));
    EXPECT_EQ(client(m_main->panel->GetDlgItem(IDC_PICTURE_FRAME)), std::pair(335 - 4, 255 - 4));
    EXPECT_EQ(client(CWnd::FromHandle(ChildOfFrame(0))), std::pair(331 - 2, 251 - 2));
    EXPECT_EQ(client(CWnd::FromHandle(ChildOfFrame(2))), std::pair(320, 240));
}

TEST_F(PanelWindow, BarAndTraceMoveWithTheSoundAndStopClearsThem) {
    ASSERT_TRUE(Open(MessageBuilder(0, 100).Speech(10)));
    const HWND bar = m_main->panel->GetDlgItem(IDC_POSITION_BAR)->m_hWnd;
    const HWND trace = ChildOfFrame(0);
    constexpr COLORREF kGreen = RGB(0, 0xFF, 0);
    HeadlessToolkit::Pump();
    const int height = windows::SurfaceOf(bar)->height();
    const int width = windows::SurfaceOf(bar)->width();
    EXPECT_EQ(Count(bar, kGreen), 0);
    EXPECT_EQ(Count(trace, kGreen), 0);

    m_main->panel->Play();
    ASSERT_TRUE(Hear(50));
    EXPECT_EQ(Count(bar, kGreen), width / 2 * height);
    EXPECT_GT(Count(trace, kGreen), 90);
    m_main->panel->Stop();
    HeadlessToolkit::Pump();
    EXPECT_EQ(Count(bar, kGreen), 0);
    EXPECT_EQ(Count(trace, kGreen), 0);

    // The levels of sound that Stop has dropped do not come back: silence draws a level line.
    m_main->panel->Play();
    WaitForReader();
    ASSERT_TRUE(Open(MessageBuilder(0, 100).Silence(10), "silence.trv"));
    m_main->panel->Play();
    ASSERT_TRUE(Hear(40));
    const std::shared_ptr<Surface> surface = windows::SurfaceOf(trace);
    int points = 0;
    for (int y = 0; y < surface->height(); ++y) {
        for (int x = surface->width() - 64; x < surface->width(); ++x) {
            if (surface->pixel(x, y) != kGreen) continue;
            ++points;
            EXPECT_NEAR(y, surface->height() / 2, 3) << x;
        }
    }
    EXPECT_GE(points, 58);
}

TEST_F(PanelWindow, ShowsPicturesAndStopTakesThemAway) {
    MessageBuilder message(5, 500);
    for (int i = 0; i < 50; ++i) message.Picture().Speech(1);
    ASSERT_TRUE(Open(message));
    const HWND renderer = ChildOfFrame(2);
    EXPECT_EQ(Pixel(renderer, 160, 120), 0U);
    m_main->panel->Play();
    ASSERT_TRUE(HeadlessToolkit::PumpUntil([&] { return Pixel(renderer, 160, 120) != 0; }));
    m_main->panel->Pause();
    const COLORREF held = Pixel(renderer, 160, 120);
    HeadlessToolkit::PumpFor(450);
    EXPECT_EQ(Pixel(renderer, 160, 120), held);
    m_main->panel->Play();
    EXPECT_TRUE(HeadlessToolkit::PumpUntil([&] { return Pixel(renderer, 160, 120) != held; }));
    m_main->panel->Stop();
    HeadlessToolkit::PumpFor(450);
    EXPECT_EQ(Pixel(renderer, 160, 120), 0U);
}

TEST_F(PanelWindow, FirstPictureComesOnePeriodOfTheMessagesRateAfterPlay) {
    for (const int rate : {5, 2, 3}) {
        SCOPED_TRACE(rate);
        ASSERT_TRUE(Open(MessageBuilder(rate, 100).Picture().Speech(10)));
        const auto from = std::chrono::steady_clock::now();
        m_main->panel->Play();
        const HWND renderer = ChildOfFrame(2);
        ASSERT_TRUE(HeadlessToolkit::PumpUntil([&] { return Pixel(renderer, 160, 120) != 0; }));
        const std::chrono::duration<double, std::milli> took = std::chrono::steady_clock::now() - from;
        EXPECT_GE(took.count(), 1000 / rate);
        EXPECT_LT(took.count(), 1000 / rate + 120);
    }
}

TEST_F(PanelWindow, ClosingTheWindowEndsWhateverPlays) {
    m_main->DestroyWindow();
    const int threads = Threads();
    const std::pair<const char*, std::function<void()>> cases[] = {
        {"open", [] {}},
        {"playing", [this] { m_main->panel->Play(); }},
        {"heard",
         [this] {
             m_main->panel->Play();
             Hear(20);
             m_sound->Advance(200);
         }},
        {"paused",
         [this] {
             m_main->panel->Play();
             Hear(20);
             m_main->panel->Pause();
         }},
        {"draining",
         [this] {
             m_main->panel->Play();
             WaitForReader();
         }},
        {"closed", [this] { m_main->panel->Close(); }},
    };
    for (const int rate : {0, 5}) {
        for (const auto& [name, act] : cases) {
            SCOPED_TRACE(name);
            m_main = std::make_unique<TestMainWindow>();
            m_app->m_pMainWnd = m_main.get();
            MessageBuilder message(rate, 100);
            for (int i = 0; i < 10; ++i) message.Picture().Speech(1);
            ASSERT_TRUE(Open(message));
            act();
            m_main->DestroyWindow();
            EXPECT_TRUE(windows::All().empty());
            EXPECT_FALSE(m_sound->IsOpen());
            EXPECT_EQ(Threads(), threads);
            HeadlessToolkit::Pump();
            EXPECT_EQ(m_main->ended, 0);
        }
    }
}

TEST_F(PanelWindow, PanelDestroysItselfOnOKAndCancel) {
    for (const int command : {IDOK, IDCANCEL}) {
        m_main = std::make_unique<TestMainWindow>();
        ASSERT_TRUE(Open(MessageBuilder(3, 100).Speech(10)));
        m_main->panel->Play();
        const HWND panel = m_main->panel->m_hWnd;
        ::SendMessage(panel, WM_COMMAND, static_cast<WPARAM>(command), 0);
        EXPECT_FALSE(IsWindow(panel));
        EXPECT_FALSE(m_sound->IsOpen());
        m_main->DestroyWindow();
    }
}

}  // namespace
