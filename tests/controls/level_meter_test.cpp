#include "controls/level_meter.h"
#include "res/resource.h"
#include "tests/support/ui_test.h"

namespace {

using ui_test::IsScribbled;
using ui_test::PixelOf;
using ui_test::Scribble;

constexpr COLORREF kGround = RGB(0xC0, 0xC0, 0xC0);
// From the bottom to the top.
constexpr COLORREF kColors[] = {RGB(0, 255, 0),   RGB(25, 230, 0),  RGB(51, 204, 0),  RGB(76, 179, 0),
                                RGB(102, 153, 0), RGB(127, 128, 0), RGB(153, 102, 0), RGB(178, 77, 0),
                                RGB(204, 51, 0),  RGB(229, 26, 0),  RGB(255, 0, 0)};

class LevelMeter : public testing::Test {
protected:
    void Make(int height) {
        m_height = height;
        ASSERT_TRUE(ui_test::MakeControl(m_meter, m_host, CRect(0, 0, 18, height)));
    }
    COLORREF Pixel(int x, int y) {
        m_meter.UpdateWindow();
        return PixelOf(m_meter, x, y);
    }
    // Rows of segment i, top to bottom: lit in its colour over the whole width, then its gap.
    void ExpectSegment(int i, int top, int lastLit, const std::string& what) {
        for (const auto& [x, y] : {std::pair(0, top), {17, top}, {0, lastLit}, {17, lastLit}})
            EXPECT_EQ(Pixel(x, y), kColors[i]) << what << ", segment " << i;
        if (lastLit + 1 < m_height) {
            EXPECT_EQ(Pixel(0, lastLit + 1), kGround) << what << ", gap " << i;
        }
    }
    int m_height = 0;

    ui_test::HostDialog m_host{IDD_PLAYER_DIALOG};
    CLevelMeter m_meter;
};

// 97 rows: segments of 9 rows with their gaps, and 7 rows that remain for segment 0.
TEST_F(LevelMeter, LightsSegmentsFromTheBottomInTheirColours) {
    Make(97);
    const struct {
        int low, high, position, lit;
    } cases[] = {{0, 100, 0, 0},
                 {0, 100, 9, 0},
                 {0, 100, 10, 1},
                 {0, 100, 55, 5},
                 {0, 100, 99, 9},
                 {0, 100, 100, 10},
                 {0, 32767, 3276, 0},
                 {0, 32767, 3277, 1},
                 {50, 100, 60, 10},
                 {7, 7, 7, 0},
                 {INT_MAX - 1, INT_MAX, INT_MAX, 10},
                 {0, INT_MAX, INT_MAX, 10}};
    for (const auto& c : cases) {
        const std::string what = std::to_string(c.position) + " of " + std::to_string(c.high);
        m_meter.SetRange(c.low, c.high);
        m_meter.SetPos(c.position);
        for (int i = 0; i <= 10; ++i) {
            const int top = (10 - i) * 9;
            if (c.lit > 0 && i <= c.lit) {
                ExpectSegment(i, top, i == 0 ? 96 : top + 7, what);
            } else {
                EXPECT_EQ(Pixel(9, top + 3), kGround) << what << ", segment " << i;
            }
        }
    }
}

TEST_F(LevelMeter, AWholeMultipleOfTheSegmentsLeavesNoRowForSegmentZero) {
    Make(100);
    m_meter.SetPos(10);
    ExpectSegment(1, 90, 98, "100 rows");
    EXPECT_EQ(Pixel(9, 99), kGround);
}

TEST_F(LevelMeter, TooLowForItsSegmentsShowsTheGroundAlone) {
    Make(19);  // segments of one row, which is the gap
    m_meter.SetPos(100);
    for (int y = 0; y < 19; ++y) EXPECT_EQ(Pixel(9, y), kGround) << y;
}

TEST_F(LevelMeter, WhatIsOutOfBoundsIsIgnored) {
    Make(97);
    m_meter.SetPos(55);
    m_meter.UpdateWindow();
    Scribble(m_meter);
    for (const int position : {-1, 101}) m_meter.SetPos(position);
    m_meter.SetRange(5, 4);
    m_meter.SetRange(-1, 10);
    EXPECT_TRUE(IsScribbled(m_meter, 9, 50));
    m_meter.UpdateWindow();
    EXPECT_TRUE(IsScribbled(m_meter, 9, 50)) << "nothing asked for a repaint";
    m_meter.Invalidate();
    EXPECT_EQ(Pixel(9, 45), kColors[5]);
    EXPECT_EQ(Pixel(9, 36), kGround);
}

TEST_F(LevelMeter, DrawsAtOnceWithoutATarget) {
    Make(97);
    m_meter.SetPos(100);
    m_meter.UpdateWindow();
    Scribble(m_meter);
    m_meter.Draw(nullptr);
    EXPECT_EQ(PixelOf(m_meter, 9, 0), kColors[10]);

    CLevelMeter windowless;
    windowless.Draw(nullptr);
}

}  // namespace
