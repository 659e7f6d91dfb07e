#include "controls/position_bar.h"
#include "res/resource.h"
#include "tests/support/ui_test.h"

namespace {

using ui_test::IsScribbled;
using ui_test::PixelOf;
using ui_test::Scribble;

constexpr COLORREF kBand = RGB(0, 0xFF, 0);
constexpr int kWidth = 100;
constexpr int kHeight = 10;

class PositionBar : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(ui_test::MakeControl(m_bar, m_host, CRect(0, 0, kWidth, kHeight)));
        ASSERT_NE(GetSysColor(COLOR_BACKGROUND), kBand);
    }

    void Step(int count) {
        for (int i = 0; i < count; ++i) m_bar.StepIt();
    }
    // Checks each column from top to bottom: the band is [from, to), the rest background.
    void ExpectBand(int from, int to, const std::string& what) {
        for (int x = 0; x < kWidth; ++x) {
            const COLORREF expected = x >= from && x < to ? kBand : GetSysColor(COLOR_BACKGROUND);
            for (const int y : {0, kHeight - 1})
                ASSERT_EQ(PixelOf(m_bar, x, y), expected) << what << ", x " << x;
        }
    }

    ui_test::HostDialog m_host{IDD_PLAYER_DIALOG};
    CPositionBar m_bar;
};

TEST_F(PositionBar, BandEndsFollowHeadAndTail) {
    const struct {
        int range, lead, steps, from, to;
    } cases[] = {
        {100, 20, 0, 0, 0},    {100, 20, 1, 0, 1},      {100, 20, 19, 0, 19},    {100, 20, 20, 1, 20},
        {100, 20, 60, 41, 60}, {100, 20, 100, 81, 100}, {100, 20, 110, 91, 100}, {100, 20, 150, 100, 100},
        {200, 88, 87, 0, 43},  {200, 88, 88, 0, 44},    {200, 88, 89, 1, 44},    {200, 88, 200, 56, 100},
        {3, 88, 1, 0, 33},     {3, 88, 2, 0, 66},       {3, 88, 9, 0, 100},      {1, 0, 1, 100, 100},
        {7, 1, 2, 28, 28},     {7, 2, 3, 28, 42},       {100000, 88, 999, 0, 0}, {100000, 88, 1000, 0, 1},
        {0, 88, 5, 0, 0},      {0, 0, 5, 0, 0},         {-5, 0, 3, 0, 0},
    };
    for (const auto& c : cases) {
        m_bar.SetRange(c.range);
        m_bar.SetLead(c.lead);
        m_bar.Reset();
        m_bar.UpdateWindow();
        Step(c.steps);
        ExpectBand(c.from, c.to, "range " + std::to_string(c.range) + ", steps " + std::to_string(c.steps));
    }
}

TEST_F(PositionBar, ExtremeRangesDoNotOverflow) {
    m_bar.SetLead(0);
    for (const int range : {INT_MAX, INT_MIN, 1}) {
        m_bar.SetRange(range);
        Step(3);
    }
    ExpectBand(100, 100, "both ends at a range made smaller");
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

}  // namespace
