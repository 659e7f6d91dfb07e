// SPDX-License-Identifier: MIT
#include "controls/position_bar.h"

#include <cmath>
#include <string>
#include <vector>

#include "res/resource.h"
#include "tests/support/ui_test.h"

namespace {

using ui_test::IsScribbled;
using ui_test::PixelOf;
using ui_test::Scribble;

constexpr COLORREF kBand = RGB(0, 0xFF, 0);
constexpr int kWidth = 100;
constexpr int kHeight = 10;
constexpr std::int64_t kMost = 0xFFFFFFFF;

// What the bar's parent hears.
class Host : public ui_test::HostDialog {
public:
    Host() : HostDialog(IDD_PLAYER_DIALOG) {}
    LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override {
        const std::string frame = " " + std::to_string(wParam);
        if (message == WM_POSITION_DRAGGED) log.push_back("dragged" + frame);
        if (message == WM_POSITION_RELEASED) log.push_back("released" + frame);
        if (message == WM_POSITION_DRAG_CANCELLED) log.push_back("cancelled");
        if (message == WM_POSITION_MOVE_BY) log.push_back("by " + std::to_string(lParam));
        return HostDialog::WindowProc(message, wParam, lParam);
    }
    std::vector<std::string> log;
};

class PositionBar : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(ui_test::MakeControl(m_bar, m_host, CRect(0, 0, kWidth, kHeight))); }

    void Step(int count) {
        for (int i = 0; i < count; ++i) m_bar.StepIt();
    }
    void Mouse(UINT message, int x) { m_bar.SendMessage(message, MK_LBUTTON, x); }
    // Checks each column from top to bottom: the band is [from, to), the rest background.
    void ExpectBand(int from, int to, const std::string& what) {
        for (int x = 0; x < kWidth; ++x) {
            const COLORREF expected = x >= from && x < to ? kBand : GetSysColor(COLOR_BACKGROUND);
            for (const int y : {0, kHeight - 1})
                ASSERT_EQ(PixelOf(m_bar, x, y), expected) << what << ", x " << x;
        }
    }

    Host m_host;
    CPositionBar m_bar;
};

TEST_F(PositionBar, BandEndsFollowHeadAndTailHoweverTheyCameThere) {
    const struct {
        std::int64_t range;
        int lead, steps, from, to;
    } cases[] = {
        {100, 20, 0, 0, 0},    {100, 20, 1, 0, 1},      {100, 20, 19, 0, 19},    {100, 20, 20, 1, 20},
        {100, 20, 60, 41, 60}, {100, 20, 100, 81, 100}, {200, 88, 87, 0, 43},    {200, 88, 88, 0, 44},
        {200, 88, 89, 1, 44},  {200, 88, 200, 56, 100}, {3, 88, 1, 0, 33},       {3, 88, 9, 0, 100},
        {1, 0, 1, 100, 100},   {7, 1, 2, 28, 28},       {7, 2, 3, 28, 42},       {0, 88, 5, 0, 0},
        {-5, 0, 3, 0, 0},      {2175, 88, 500, 18, 22}, {2176, 88, 500, 18, 22}, {2176, 88, 1, 0, 4},
        {9999, 88, 999, 5, 9}, {kMost, 88, 1000, 0, 4},
    };
    for (const auto& c : cases) {
        m_bar.SetRange(c.range);
        m_bar.SetLead(c.lead);
        for (const bool atOnce : {false, true}) {
            m_bar.Reset();
            m_bar.UpdateWindow();
            if (atOnce)
                m_bar.SetPosition(c.steps);
            else
                Step(c.steps);
            ExpectBand(c.from, c.to, "step " + std::to_string(c.steps) + " of " + std::to_string(c.range));
        }
    }
    m_bar.SetPosition(kMost);
    ExpectBand(96, 100, "the last of the most frames there can be");
    m_bar.SetRange(100);
    Step(1);
    ExpectBand(100, 100, "beyond a range made smaller");
    m_bar.SetRange(200);
    m_bar.SetPosition(100);
    ExpectBand(6, 50, "within a range that grew");
}

TEST_F(PositionBar, AStepThatMovesNoPixelIsNotPainted) {
    m_bar.SetRange(1000);
    m_bar.SetLead(200);
    Step(250);
    Scribble(m_bar);
    Step(8);
    EXPECT_TRUE(IsScribbled(m_bar, 50, 5)) << "head 258, tail 59";
    m_bar.StepIt();
    ExpectBand(6, 25, "the tail alone moved");
    Scribble(m_bar);
    m_bar.StepIt();
    ExpectBand(6, 26, "the head alone moved");
}

TEST_F(PositionBar, DraggingMovesTheHeadAtOnceAndTellsItsParent) {
    m_bar.SetRange(1000);
    m_bar.SetPosition(500);
    Mouse(WM_LBUTTONDOWN, 20);
    ExpectBand(16, 20, "pressed");
    Mouse(WM_MOUSEMOVE, 20);
    Mouse(WM_MOUSEMOVE, 150);
    m_bar.StepIt();
    m_bar.SetPosition(600);
    ExpectBand(96, 100, "dragged beyond the end, whatever is played");
    Mouse(WM_LBUTTONUP, 30);
    ExpectBand(26, 30, "let go");
    EXPECT_EQ(m_host.log,
              (std::vector<std::string>{"dragged 200", "dragged 1000", "dragged 300", "released 300"}));

    m_host.log.clear();
    Mouse(WM_LBUTTONDBLCLK, -3);
    ReleaseCapture();
    ExpectBand(26, 30, "the mouse was taken away");
    Mouse(WM_MOUSEMOVE, 40);
    Mouse(WM_LBUTTONUP, 40);
    Mouse(WM_LBUTTONDOWN, 50);
    m_bar.Reset();
    Mouse(WM_LBUTTONUP, 50);
    m_bar.SetRange(0);
    Mouse(WM_LBUTTONDOWN, 50);
    EXPECT_EQ(m_host.log, (std::vector<std::string>{"dragged 0", "cancelled", "dragged 500"}));
    EXPECT_EQ(CWnd::GetCapture(), nullptr);
}

TEST_F(PositionBar, TheWheelMovesByFiveSecondsANotch) {
    for (const int delta : {120, -240, 30, 1, -1, -30}) {
        m_bar.SendMessage(WM_MOUSEWHEEL, static_cast<WPARAM>(static_cast<std::uint16_t>(delta)) << 16U);
    }
    EXPECT_EQ(m_host.log,
              (std::vector<std::string>{"by 250", "by -500", "by 62", "by 2", "by -1", "by -63"}));
}

TEST_F(PositionBar, AssistiveProgramsReadAndSetSeconds) {
    m_bar.SetRange(4500);
    m_bar.SetPosition(610);
    EXPECT_EQ(m_bar.Value(), 12.2);
    EXPECT_EQ(m_bar.MaximumValue(), 90.0);
    EXPECT_STREQ(m_bar.ValueText(), "0:12 of 1:30");
    for (const double seconds : {30.0, 1e300, -1.0, std::nan("")}) m_bar.SetValue(seconds);
    EXPECT_EQ(m_host.log, (std::vector<std::string>{"released 1500", "released 4500"}));
    m_bar.SetRange(kMost);
    EXPECT_STREQ(m_bar.TextAt(3661 * 50), "1:01:01 of 23860:55:45");
}

}  // namespace
