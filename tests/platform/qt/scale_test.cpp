// SPDX-License-Identifier: MIT
// Drawing in device pixels. The program runs these on screens of several scales (QT_SCALE_FACTOR); each test
// adds the sizes that a person may choose.
#include <gtest/gtest.h>

#include <QApplication>
#include <QScreen>
#include <QWidget>
#include <cstring>
#include <set>

#include "platform/framework/afxicon.h"
#include "platform/framework/window.h"
#include "platform/qt/toolkit.h"
#include "res/resource.h"
#include "tests/support/ui_test.h"

namespace {

constexpr COLORREF kRed = RGB(0xFF, 0, 0);
constexpr COLORREF kBlue = RGB(0, 0, 0xFF);
constexpr COLORREF kBlack = RGB(0, 0, 0);
constexpr int kPercents[] = {100, 125, 150, 200, 300};

class Scale : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(ui_test::MakeControl(m_window, m_host, CRect(13, 7, 74, 60))); }
    void TearDown() override { SetContentScale(100); }

    // Runs the body at each size, with the window's picture erased to black.
    template <class Body>
    void AtEach(Body&& body) {
        for (const int percent : kPercents) {
            SCOPED_TRACE(percent);
            SetContentScale(percent);
            const auto surface = windows::SurfaceOf(m_window.GetSafeHwnd());
            const double scale = qApp->devicePixelRatio() * percent / 100;
            EXPECT_NEAR(surface->width(), 61 * scale, 1.5);
            EXPECT_NEAR(surface->scale().factor, scale, 1e-9);
            {
                CClientDC dc(&m_window);
                dc.FillSolidRect(0, 0, 61, 53, kBlack);
            }
            body(*surface, scale);
        }
    }

    ui_test::HostDialog m_host{IDD_PLAYER_DIALOG};
    CWnd m_window;
};

int CountColor(const Surface& surface, COLORREF color) {
    int count = 0;
    for (int y = 0; y < surface.height(); ++y)
        for (int x = 0; x < surface.width(); ++x) count += surface.pixel(x, y) == color ? 1 : 0;
    return count;
}

// Aligned blocks of 2 x 2 pixels that are not of one colour: an enlarged picture has none.
int MixedBlocks(const Surface& surface) {
    int mixed = 0;
    for (int y = 0; y + 1 < surface.height(); y += 2)
        for (int x = 0; x + 1 < surface.width(); x += 2) {
            const COLORREF first = surface.pixel(x, y);
            mixed += surface.pixel(x + 1, y) != first || surface.pixel(x, y + 1) != first ? 1 : 0;
        }
    return mixed;
}

// Faults: an edge that is blurred, doubled, missing, or beside the window's own last pixel; areas that meet
// in logical units and leave a gap or overlap; an off-screen bitmap that falls elsewhere than direct drawing.
TEST_F(Scale, EdgesAreOneDevicePixelAndAreasMeet) {
    AtEach([&](const Surface& surface, double) {
        const int w = surface.width();
        const int h = surface.height();
        {
            CClientDC dc(&m_window);
            dc.Draw3dRect(CRect(0, 0, 61, 53), kRed, kBlue);
        }
        EXPECT_EQ(CountColor(surface, kRed), w + h - 3);
        EXPECT_EQ(CountColor(surface, kBlue), w + h - 1);
        EXPECT_EQ(surface.pixel(w - 1, 0), kBlue);
        EXPECT_EQ(surface.pixel(0, h - 2), kRed);
        {
            CClientDC dc(&m_window);
            CPen pen(PS_SOLID, 0, kRed);
            dc.FillSolidRect(0, 0, 61, 53, kBlack);
            dc.SelectObject(&pen);
            dc.MoveTo(0, 20);
            dc.LineTo(61, 20);
        }
        EXPECT_EQ(CountColor(surface, kRed), w);
        CClientDC dc(&m_window);
        CDC memory;
        CBitmap bitmap;
        ASSERT_TRUE(memory.CreateCompatibleDC(&dc) && bitmap.CreateCompatibleBitmap(&dc, 28, 26));
        memory.SelectObject(&bitmap);
        memory.SetWindowOrg(33, 27);
        memory.FillSolidRect(33, 27, 28, 26, kBlue);
        dc.FillSolidRect(0, 0, 33, 53, kRed);
        dc.FillSolidRect(33, 0, 28, 27, kRed);
        dc.BitBlt(33, 27, 28, 26, &memory, 33, 27, SRCCOPY);
        EXPECT_EQ(CountColor(surface, kRed) + CountColor(surface, kBlue), w * h);
        const CRect corner = surface.scale().Device(CRect(33, 27, 61, 53));
        EXPECT_EQ(CountColor(surface, kBlue), corner.Width() * corner.Height());
    });
}

// Faults: text or icons drawn small and enlarged, or drawn in a size of their own.
TEST_F(Scale, TextAndIconsAreDrawnInTheirLargerSize) {
    const HICON icon = LoadImage(IDI_STOP, IMAGE_ICON);
    AtEach([&](const Surface& surface, double scale) {
        {
            CClientDC dc(&m_window);
            dc.DrawText("Ws", CRect(0, 0, 61, 20), SS_LEFT, kRed);
        }
        int bottom = 0;
        for (int y = 0; y < surface.height(); ++y)
            for (int x = 0; x < surface.width(); ++x)
                if (surface.pixel(x, y) != kBlack) bottom = y + 1;
        EXPECT_NEAR(bottom, 10 * scale, 1 + scale);
        EXPECT_GT(MixedBlocks(surface), 10);
        {
            CClientDC dc(&m_window);
            dc.FillSolidRect(0, 0, 61, 53, kBlack);
            EXPECT_TRUE(dc.DrawIcon(2, 2, icon));
        }
        CRect seen(999, 999, 0, 0);
        for (int y = 0; y < surface.height(); ++y)
            for (int x = 0; x < surface.width(); ++x)
                if (surface.pixel(x, y) != kBlack)
                    seen = CRect(std::min(seen.left, x), std::min(seen.top, y), std::max(seen.right, x + 1),
                                 std::max(seen.bottom, y + 1));
        EXPECT_NEAR(seen.Width(), 21 * scale, 1 + scale);
        EXPECT_NEAR(seen.left, 8 * scale, 1 + scale);
    });
    DestroyIcon(icon);
}

// Faults: a picture enlarged in blocks, shifted, cut at its edges, or with its colours changed.
TEST_F(Scale, PicturesAreStretchedOnceAndSmoothly) {
    BITMAPINFOHEADER header = {sizeof header, 61, 53, 1, 24, BI_RGB, 0, 0, 0, 0, 0};
    void* bits = nullptr;
    CBitmap picture;
    ASSERT_TRUE(picture.Attach(CreateDIBSection(&header, DIB_RGB_COLORS, &bits)));
    auto* bytes = static_cast<BYTE*>(bits);
    constexpr int kStride = 61 * 3 + 1;
    for (int y = 0; y < 53; ++y)
        for (int x = 0; x < 61; ++x) {
            BYTE* pixel = bytes + y * kStride + x * 3;
            pixel[0] = 0x77;
            pixel[1] = static_cast<BYTE>((52 - y) * 4);
            pixel[2] = static_cast<BYTE>(x * 4);
        }
    CDC memory;
    memory.CreateCompatibleDC(nullptr);
    memory.SelectObject(&picture);
    AtEach([&](const Surface& surface, double scale) {
        {
            CClientDC dc(&m_window);
            EXPECT_TRUE(dc.BitBlt(0, 0, 61, 53, &memory, 0, 0, SRCCOPY));
        }
        // A ramp stays one, its ends in the middle of the first and the last pixel.
        for (int x = 0; x < surface.width(); ++x) {
            const double ideal = std::clamp(((x + 0.5) * 61 / surface.width() - 0.5) * 4, 0.0, 240.0);
            const COLORREF color = surface.pixel(x, surface.height() / 2);
            EXPECT_NEAR(GetRValue(color), ideal, 1.5) << x;
            EXPECT_EQ(GetBValue(color), 0x77);
        }
        EXPECT_EQ(GetGValue(surface.pixel(0, 0)), 0);
        EXPECT_EQ(GetGValue(surface.pixel(0, surface.height() - 1)), 208);
        std::set<int> reds;
        for (int x = 0; x < surface.width(); ++x) reds.insert(GetRValue(surface.pixel(x, 0)));
        EXPECT_TRUE(scale < 2.0 || reds.size() > 61);
    });
}

// Faults: the toolkit scales or shifts the picture once more on its way to the screen; a border's lines are
// doubled, missing or under the client area; a window is not painted in its new scale.
TEST_F(Scale, TheScreenHasThePicturesOwnPixels) {
    const CWnd* frame = m_host.GetDlgItem(IDC_PANEL_FRAME);
    for (const Window* child : windows::Find(m_host.m_hWnd)->children) {
        if (child->id != IDC_PANEL_FRAME) continue;
        EXPECT_EQ(frame, child->object);
        auto surface = windows::SurfaceOf(child->handle);
        const CRect whole(0, 0, surface->width(), surface->height());
        // A pattern that any resampling would show.
        for (int x = 0; x < whole.right; x += 2) surface->Fill(CRect(x, 0, x + 1, whole.bottom), kRed, whole);
        QWidget* widget = WidgetOf(child->handle);
        widget->update();
        ui_test::Pump();
        QWidget* frameWindow = widget->window();
        const QImage screen = frameWindow->screen()->grabWindow(frameWindow->winId()).toImage();
        const double ratio = widget->devicePixelRatioF();
        const QPoint at = widget->mapTo(frameWindow, QPoint(0, 0));
        const int left = qRound(at.x() * ratio);
        const int top = qRound(at.y() * ratio);
        // What is grabbed ends early on a dense screen.
        ASSERT_GT(screen.height(), top + 5);
        const int seen = std::min(whole.right, screen.width() - left);
        for (int x = 0; x < seen; ++x) {
            const COLORREF wanted = surface->pixel(x, 5);
            EXPECT_EQ(screen.pixel(left + x, top + 5),
                      qRgb(GetRValue(wanted), GetGValue(wanted), GetBValue(wanted)))
                << x;
        }
        const QRgb shadow = QApplication::palette().color(QPalette::Dark).rgb();
        EXPECT_EQ(screen.pixel(left - 1, top + 5), shadow);
        EXPECT_NE(screen.pixel(left - 2, top + 5), shadow);
        EXPECT_EQ(screen.pixel(left + 200, top - 1), shadow);
        EXPECT_NE(screen.pixel(left + 200, top - 2), shadow);
    }
}

// Faults: a picture that does not fill the screen or loses its shape; clicks that fall elsewhere; a window
// that does not come back as it was.
TEST_F(Scale, OneWindowHasTheWholeScreenAndComesBack) {
    const CRect before = windows::Find(m_window.GetSafeHwnd())->rect;
    QWidget* widget = WidgetOf(m_window.GetSafeHwnd());
    const QSize top = widget->window()->size();
    for (int round = 0; round < 2; ++round) {
        m_window.ShowFullScreen(TRUE);
        ui_test::Pump();
        const QSize screen = widget->window()->size();
        EXPECT_EQ(screen, widget->screen()->size());
        const auto surface = windows::SurfaceOf(m_window.GetSafeHwnd());
        // The off-screen screen is a square.
        EXPECT_NEAR(surface->width(), screen.width() * qApp->devicePixelRatio(), 1);
        EXPECT_NEAR(surface->width() * 53.0 / 61.0, surface->height(), 2);
        POINT corner = {61, 53};
        m_window.ClientToScreen(&corner);
        EXPECT_NEAR(corner.x, screen.width(), 2);
        CRect client;
        m_window.GetClientRect(client);
        EXPECT_EQ(client, CRect(0, 0, 61, 53));
        m_window.ShowFullScreen(FALSE);
        ui_test::Pump();
        EXPECT_EQ(widget->geometry(), QRect(before.left, before.top, before.Width(), before.Height()));
        EXPECT_EQ(widget->window()->size(), top);
        EXPECT_TRUE(widget->isVisible());
    }
}

}  // namespace
