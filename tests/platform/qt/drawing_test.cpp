// The drawing rules on which the controls' pixels rest.
#include <gtest/gtest.h>

#include "platform/framework/afxgdi.h"

namespace {

constexpr COLORREF kRed = RGB(255, 0, 0);
constexpr COLORREF kBlack = 0;

// A memory context with a bitmap of its own.
struct Canvas {
    explicit Canvas(int width, int height) {
        dc.CreateCompatibleDC(nullptr);
        bitmap.CreateCompatibleBitmap(&dc, width, height);
        first = dc.SelectObject(&bitmap);
    }
    CDC dc;
    CBitmap bitmap;
    CBitmap* first;
};

TEST(Drawing, LinesLeaveOutTheirEndPoint) {
    Canvas c(8, 8);
    CPen pen(PS_SOLID, 0, kRed);
    c.dc.SelectObject(&pen);
    c.dc.MoveTo(1, 1);
    c.dc.LineTo(5, 1);
    EXPECT_EQ(c.dc.GetPixel(4, 1), kRed);
    EXPECT_EQ(c.dc.GetPixel(5, 1), kBlack);
    c.dc.MoveTo(5, 6);
    c.dc.LineTo(1, 2);  // up and left
    EXPECT_EQ(c.dc.GetPixel(5, 6), kRed);
    EXPECT_EQ(c.dc.GetPixel(3, 4), kRed);
    EXPECT_EQ(c.dc.GetPixel(1, 2), kBlack);
    const POINT corners[] = {{0, 3}, {0, 7}, {3, 7}};
    c.dc.Polyline(corners, 3);
    EXPECT_EQ(c.dc.GetPixel(0, 7), kRed) << "the second line starts where the first one stopped";
    EXPECT_EQ(c.dc.GetPixel(3, 7), kBlack);
}

// A picture scrolled within itself must not read what it has already written, whichever way it goes.
TEST(Drawing, CopiesWithinOneBitmapMayOverlap) {
    for (const int step : {-1, 1}) {
        Canvas c(6, 6);
        for (int i = 0; i < 6; ++i) c.dc.FillSolidRect(i, i, 1, 1, RGB(10U + static_cast<unsigned>(i), 0, 0));
        ASSERT_TRUE(c.dc.BitBlt(step, step, 6, 6, &c.dc, 0, 0, SRCCOPY));
        for (int i = 1; i < 5; ++i)
            EXPECT_EQ(c.dc.GetPixel(i + step, i + step), RGB(10U + static_cast<unsigned>(i), 0, 0)) << step;
    }
}

TEST(Drawing, SectionsWithoutAUsableHeightAreRefused) {
    BITMAPINFOHEADER header{};
    header.biSize = sizeof header;
    header.biWidth = 3;
    header.biPlanes = 1;
    header.biBitCount = 24;
    for (const int height : {0, -2, 1 << 30}) {
        void* bits = &header;
        header.biHeight = height;
        EXPECT_EQ(CreateDIBSection(&header, DIB_RGB_COLORS, &bits), nullptr) << height;
        EXPECT_EQ(bits, nullptr);
    }
}

}  // namespace
