// SPDX-License-Identifier: MIT
#include <cmath>
#include <limits>
#include <vector>

#include "controls/waveform_wnd.h"
#include "platform/framework/window.h"
#include "res/resource.h"
#include "tests/support/ui_test.h"

namespace {

using ui_test::IsScribbled;
using ui_test::PixelOf;
using ui_test::Scribble;

constexpr COLORREF kBlack = RGB(0, 0, 0);
constexpr COLORREF kGrid = RGB(0x1F, 0x1F, 0x1F);
constexpr COLORREF kGreen = RGB(0, 0xFF, 0);
constexpr COLORREF kGreenOnGrid = RGB(0x1F, 0xFF, 0x1F);

// A client area of 100 x 60: the plot is 4..96 x 4..56 (92 x 52), the grid step 10, and with the range 0 to 2
// a unit is 26 pixels.
class Waveform : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(m_wave.Create(WS_CHILD | WS_VISIBLE, CRect(10, 10, 112, 72), &m_host, 0));
        CRect client;
        m_wave.GetClientRect(client);
        ASSERT_EQ(client.Width(), 100);
        ASSERT_EQ(client.Height(), 60);
        m_wave.SetGridColor(kGrid);
        m_wave.SetPlotColor(kGreen);
        m_wave.SetShift(2);
        m_wave.SetRange(0.0F, 2.0F, TRUE);
        m_wave.UpdateWindow();
    }

    COLORREF Pixel(int x, int y) {
        m_wave.UpdateWindow();
        return PixelOf(m_wave, x, y);
    }
    bool Lit(int x, int y) { return GetGValue(Pixel(x, y)) == 0xFF; }
    // Row of the trace where it enters, after enough equal values for a level stretch; -1 for none.
    int LevelOf(float value) {
        m_wave.AppendPoint(value);
        m_wave.AppendPoint(value);
        for (int y = 0; y < 60; ++y)
            if (Lit(93, y) && Lit(94, y)) return y;
        return -1;
    }

    ui_test::HostDialog m_host{IDD_PLAYER_DIALOG};
    CWaveformWnd m_wave;
};

TEST_F(Waveform, FirstSegmentRisesFromTheBottomAndScrollsOnWithoutAGap) {
    m_wave.AppendPoint(1.0F);
    EXPECT_TRUE(Lit(93, 56));
    EXPECT_TRUE(Lit(94, 43));
    EXPECT_TRUE(Lit(95, 31));
    EXPECT_FALSE(Lit(95, 30)) << "a line leaves out its end";

    m_wave.AppendPoint(1.0F);
    EXPECT_TRUE(Lit(91, 56)) << "scrolled by the shift";
    EXPECT_TRUE(Lit(93, 31));
    EXPECT_TRUE(Lit(93, 30)) << "starts where the last one ended";
    EXPECT_FALSE(Lit(95, 31)) << "the strip that came in is clear";

    for (int i = 0; i < 60; ++i) m_wave.AppendPoint(1.0F);
    for (int x = 5; x < 95; ++x) EXPECT_TRUE(Lit(x, 30)) << x;
    for (int x = 0; x < 100; ++x) EXPECT_FALSE(Lit(x, 56)) << "the first segment has left, at " << x;

    m_wave.Reset();
    for (int x = 5; x < 95; ++x) EXPECT_FALSE(Lit(x, 30)) << x;
    EXPECT_EQ(Pixel(86, 30), kGrid);
    m_wave.AppendPoint(1.0F);
    EXPECT_TRUE(Lit(93, 30)) << "goes on from the last value";
}

// What ShowValues draws at once is what appending draws, pixel by pixel, and what comes after joins it.
TEST_F(Waveform, ShownValuesLookAsIfTheyHadBeenAppended) {
    const auto picture = [&] {
        std::vector<COLORREF> pixels;
        for (int i = 0; i < 100 * 60; ++i) pixels.push_back(Pixel(i % 100, i / 100));
        return pixels;
    };
    std::vector<float> values;
    for (int i = 0; i < 200; ++i) values.push_back(static_cast<float>(i * 37 % 101) / 45.0F - 0.1F);
    EXPECT_EQ(m_wave.GetVisibleCount(), 47);
    for (const int count : {200, 48, 47}) {
        for (const float value : values) m_wave.AppendPoint(value);
        for (int i = 0; i < 3; ++i) m_wave.AppendPoint(1.0F);
        const auto appended = picture();
        m_wave.ShowValues(values.data() + 200 - count, count);
        for (int i = 0; i < 3; ++i) m_wave.AppendPoint(1.0F);
        EXPECT_TRUE(picture() == appended) << count;
    }
    const float few[] = {0.5F, 1.0F, 1.0F};
    m_wave.ShowValues(few, 3);
    EXPECT_TRUE(Lit(94, 30));
    EXPECT_TRUE(Lit(91, 43));
    for (int y = 0; y < 60; ++y) EXPECT_FALSE(Lit(90, y)) << "nothing before the first, " << y;
    m_wave.ShowValues(few, 0);
    EXPECT_FALSE(Lit(94, 30));
}

// Faults: a trace that is lost, enlarged or moved when the scale changes, or that does not go on from there.
TEST_F(Waveform, AnotherScaleDrawsTheTraceAnew) {
    const std::vector<float> values = {0.2F, 1.7F, 0.4F, 1.2F, 0.9F, 1.9F};
    const auto picture = [&] {
        m_wave.UpdateWindow();
        const auto surface = windows::SurfaceOf(m_wave.GetSafeHwnd());
        return std::vector(surface->pixels(), surface->pixels() + surface->width() * surface->height());
    };
    for (const int percent : {150, 200, 300}) {
        SCOPED_TRACE(percent);
        SetContentScale(100);
        m_wave.ShowValues(values.data(), 5);
        SetContentScale(percent);
        m_wave.AppendPoint(values[5]);
        const auto followed = picture();
        m_wave.ShowValues(values.data(), 6);
        EXPECT_TRUE(followed == picture());
    }
    SetContentScale(100);
}

TEST_F(Waveform, ValuesAtAndBeyondTheRangeAreDrawnAtItsEdges) {
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    const struct {
        float value;
        int row;
    } cases[] = {{2.0F, 5},   {3.5F, 5},        {kInfinity, 5},      {1.9999F, 5}, {0.0F, 56},
                 {-1.0F, 56}, {-kInfinity, 56}, {std::nanf(""), 56}, {1.0F, 30},   {0.5F, 43}};
    for (const auto& c : cases) EXPECT_EQ(LevelOf(c.value), c.row) << c.value;
}

TEST_F(Waveform, QueuedValuesAreShownOldestFirstAndCanBeDropped) {
    m_wave.QueueValue(1.0F);
    m_wave.QueueValue(0.5F);
    m_wave.ShowNextValue();
    m_wave.ShowNextValue();
    EXPECT_TRUE(Lit(93, 30));
    EXPECT_TRUE(Lit(95, 42));
    m_wave.QueueValue(1.5F);
    m_wave.ClearQueue();
    m_wave.ShowNextValue();
    EXPECT_TRUE(Lit(95, 42));
}

TEST_F(Waveform, OnlyWhatNeedsPaintingIsPaintedAndFromItsOwnPlace) {
    ASSERT_EQ(LevelOf(22.2F / 26.0F), 34);
    Scribble(m_wave);
    m_wave.InvalidateRect(CRect(80, 30, 96, 40));
    m_wave.UpdateWindow();
    EXPECT_EQ(PixelOf(m_wave, 86, 31), kGrid);
    EXPECT_EQ(PixelOf(m_wave, 93, 34), kGreenOnGrid);
    EXPECT_EQ(PixelOf(m_wave, 85, 31), kBlack);
    for (const auto& [x, y] : {std::pair(79, 34), {96, 34}, {86, 29}, {86, 40}, {0, 0}}) {
        EXPECT_TRUE(IsScribbled(m_wave, x, y)) << x << ", " << y;
    }
}

}  // namespace
