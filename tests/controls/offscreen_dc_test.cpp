#include "controls/offscreen_dc.h"
#include "controls/mem_dc.h"
#include "res/resource.h"
#include "tests/support/ui_test.h"

namespace {

using ui_test::IsScribbled;
using ui_test::PixelOf;

constexpr COLORREF kRed = RGB(0xFF, 0, 0);
constexpr COLORREF kBlue = RGB(0, 0, 0xFF);

class OffscreenContexts : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(ui_test::MakeControl(m_canvas, m_host, CRect(0, 0, 40, 30)));
        m_canvas.UpdateWindow();
        ui_test::Scribble(m_canvas);
    }
    ui_test::HostDialog m_host{IDD_PLAYER_DIALOG};
    CWnd m_canvas;
};

TEST_F(OffscreenContexts, AreCopiedToTheirRectangleWhenTheyEnd) {
    CClientDC target(&m_canvas);
    {
        COffscreenDC dc(&target, CRect(5, 6, 15, 16));
        dc.FillSolidRect(0, 0, 40, 30, kBlue);
        dc.FillSolidRect(10, 10, 1, 1, kRed);
        EXPECT_TRUE(IsScribbled(m_canvas, 10, 10)) << "not before its end";
    }
    EXPECT_EQ(PixelOf(m_canvas, 10, 10), kRed);
    EXPECT_EQ(PixelOf(m_canvas, 5, 6), kBlue);
    EXPECT_EQ(PixelOf(m_canvas, 14, 15), kBlue);
    for (const auto& [x, y] : {std::pair(4, 6), {5, 5}, {15, 15}, {14, 16}})
        EXPECT_TRUE(IsScribbled(m_canvas, x, y)) << x << ", " << y;
}

TEST_F(OffscreenContexts, EmptyRectanglesDrawNothing) {
    {
        CClientDC target(&m_canvas);
        COffscreenDC dc(&target, CRect(9, 9, 4, 4));
        dc.FillSolidRect(0, 0, 40, 30, kRed);
        // Nothing waits to be painted, so the paint rectangle is empty.
        CPaintDC paint(&m_canvas);
        CMemDC mem(&paint, kRed);
        mem.CopyBack(FALSE, nullptr);
    }
    for (const auto& [x, y] : {std::pair(0, 0), {5, 5}, {8, 8}})
        EXPECT_TRUE(IsScribbled(m_canvas, x, y)) << x << ", " << y;
}

}  // namespace
