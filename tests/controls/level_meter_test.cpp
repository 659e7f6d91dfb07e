// SPDX-License-Identifier: MIT
#include "controls/level_meter.h"

#include <algorithm>

#include "res/resource.h"
#include "tests/support/ui_test.h"

namespace {

using ui_test::IsScribbled;
using ui_test::PixelOf;

constexpr COLORREF kGround = RGB(0xC0, 0xC0, 0xC0);
// From the bottom to the top.
constexpr COLORREF kColors[] = {RGB(0, 255, 0),   RGB(25, 230, 0),  RGB(51, 204, 0),  RGB(76, 179, 0),
                                RGB(102, 153, 0), RGB(127, 128, 0), RGB(153, 102, 0), RGB(178, 77, 0),
                                RGB(204, 51, 0),  RGB(229, 26, 0),  RGB(255, 0, 0)};

class LevelMeter : public testing::Test {
protected:
    void Make(int height) { ASSERT_TRUE(ui_test::MakeControl(m_meter, m_host, CRect(0, 0, 18, height))); }
    COLORREF Pixel(int x, int y) {
        m_meter.UpdateWindow();
        return PixelOf(m_meter, x, y);
    }

    ui_test::HostDialog m_host{IDD_PLAYER_DIALOG};
    CLevelMeter m_meter;
};

// 97 rows: segments of 9 rows with their gaps, and 7 rows that remain for segment 0.
TEST_F(LevelMeter, LightsSegmentsFromTheBottomInTheirColours) {
    Make(97);
    const struct {
        int low, high, position, lit;
    } cases[] = {{0, 100, 9, 0},    {0, 100, 10, 1},     {0, 100, 55, 5},     {0, 100, 99, 9},
                 {0, 100, 100, 10}, {0, 32767, 3277, 1}, {50, 100, 60, 10},   {7, 7, 7, 0},
                 {0, 100, 0, 0},    {0, 32767, 3276, 0}, {0, INT_MAX, 99, 0}, {0, INT_MAX, INT_MAX, 10}};
    for (const auto& c : cases) {
        SCOPED_TRACE(std::to_string(c.position) + " of " + std::to_string(c.high));
        m_meter.SetRange(c.low, c.high);
        m_meter.SetPos(c.position);
        for (int i = 0; i <= 10; ++i) {
            const int top = (10 - i) * 9;
            const COLORREF color = c.lit > 0 && i <= c.lit ? kColors[i] : kGround;
            for (const auto& [x, y] : {std::pair(0, top), {17, top}, {9, i == 0 ? 96 : top + 7}})
                EXPECT_EQ(Pixel(x, y), color) << "segment " << i;
            EXPECT_EQ(Pixel(0, std::min(top + 8, 96)), i == 0 ? color : kGround) << "gap under " << i;
        }
    }
}

TEST_F(LevelMeter, WhatIsOutOfBoundsIsIgnored) {
    Make(97);
    m_meter.SetPos(55);
    m_meter.UpdateWindow();
    ui_test::Scribble(m_meter);
    for (const int position : {-1, 101}) m_meter.SetPos(position);
    m_meter.SetRange(5, 4);
    m_meter.SetRange(-1, 10);
    m_meter.UpdateWindow();
    EXPECT_TRUE(IsScribbled(m_meter, 9, 50)) << "nothing asked for a repaint";
    m_meter.Draw(nullptr);
    EXPECT_EQ(PixelOf(m_meter, 9, 45), kColors[5]) << "drawn at once without a target";
    EXPECT_EQ(PixelOf(m_meter, 9, 36), kGround);
}

}  // namespace
