#include "controls/icon_button.h"

#include <QAccessible>
#include <QApplication>
#include <QTest>
#include <QToolTip>
#include <QWidget>
#include <tuple>
#include <vector>

#include "platform/framework/afxicon.h"
#include "platform/qt/toolkit.h"
#include "res/resource.h"
#include "tests/support/ui_test.h"

namespace {

constexpr int kIcon = 32;

// The player's tool row with two of its buttons.
class ToolRow : public ui_test::HostDialog {
public:
    ToolRow() : HostDialog(IDD_PLAYER_DIALOG) {
        CDataExchange dx(this, FALSE);
        DDX_Control(&dx, IDC_PLAY_PAUSE, m_play);
        DDX_Control(&dx, IDC_STOP, m_stop);
    }
    LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override {
        if (message == WM_COMMAND && wParam == IDC_PLAY_PAUSE) ++m_clicks;
        return HostDialog::WindowProc(message, wParam, lParam);
    }
    CIconButton m_play;
    CIconButton m_stop;
    int m_clicks = 0;
};

using Pixels = std::vector<COLORREF>;

class IconButton : public testing::Test {
protected:
    void SetUp() override {
        m_row.m_play.GetClientRect(m_client);
        ASSERT_TRUE(m_row.m_play.SetIcons(IDI_PLAY));
    }

    QPoint Inside() const { return QPoint(m_client.Width() / 2, m_client.Height() / 2); }
    QPoint Outside() const { return QPoint(m_client.right + 60, m_client.bottom + 60); }
    QWidget* Widget() { return WidgetOf(m_row.m_play.m_hWnd); }
    void Send(QEvent::Type type, const QPoint& where, Qt::MouseButton button, Qt::MouseButtons buttons) {
        QMouseEvent event(type, where, Widget()->mapToGlobal(where), button, buttons, Qt::NoModifier);
        QApplication::sendEvent(Widget(), &event);
    }
    void Move(const QPoint& where, Qt::MouseButtons buttons = Qt::NoButton) {
        Send(QEvent::MouseMove, where, Qt::NoButton, buttons);
    }
    void Press(QEvent::Type type = QEvent::MouseButtonPress) {
        Send(type, Inside(), Qt::LeftButton, Qt::LeftButton);
    }
    void Release(const QPoint& where) {
        Send(QEvent::MouseButtonRelease, where, Qt::LeftButton, Qt::NoButton);
    }

    Pixels Shown() {
        m_row.m_play.UpdateWindow();
        const CClientDC dc(&m_row.m_play);
        return Grab(dc);
    }
    Pixels Grab(const CDC& dc) const {
        Pixels pixels;
        for (int y = 0; y < m_client.bottom; ++y) {
            for (int x = 0; x < m_client.right; ++x) pixels.push_back(dc.GetPixel(x, y));
        }
        return pixels;
    }

    enum class Edge { kNone, kRaised, kSunken };
    // What a look is made of: its face, its edge, and the icon in the middle, one pixel further when pressed.
    Pixels Look(UINT icon, Edge edge, bool latched = false, bool disabled = false) const {
        CBitmap bitmap;
        bitmap.CreateCompatibleBitmap(nullptr, m_client.right, m_client.bottom);
        CDC dc;
        dc.CreateCompatibleDC(nullptr);
        CBitmap* const prev = dc.SelectObject(&bitmap);
        const int right = m_client.right - 1;
        const int bottom = m_client.bottom - 1;
        dc.FillSolidRect(m_client, GetSysColor(latched ? COLOR_GRAYTEXT : COLOR_BTNFACE));
        if (edge != Edge::kNone) {
            const COLORREF light = GetSysColor(COLOR_BTNHIGHLIGHT);
            const COLORREF dark = GetSysColor(COLOR_BTNSHADOW);
            const COLORREF under = edge == Edge::kSunken ? light : dark;
            const COLORREF over = edge == Edge::kSunken ? dark : light;
            dc.FillSolidRect(0, 0, right + 1, 1, over);
            dc.FillSolidRect(0, 0, 1, bottom + 1, over);
            dc.FillSolidRect(0, bottom, right + 1, 1, under);
            dc.FillSolidRect(right, 0, 1, bottom + 1, under);
        }
        const int moved = edge == Edge::kSunken ? 1 : 0;
        if (const HICON handle = LoadImage(icon, IMAGE_ICON)) {
            const POINT at = {(m_client.right - kIcon) / 2 + moved, (m_client.bottom - kIcon) / 2 + moved};
            dc.DrawState(at, SIZE{kIcon, kIcon}, handle, disabled ? DST_ICON | DSS_DISABLED : DST_ICON);
            DestroyIcon(handle);
        }
        Pixels pixels = Grab(dc);
        dc.SelectObject(prev);
        return pixels;
    }
    void ExpectLook(const Pixels& expected, const std::string& what) {
        EXPECT_TRUE(Shown() == expected) << what;
    }

    CWinApp m_app;  // shows its windows their messages first, which is where the tips come from
    ToolRow m_row;
    CRect m_client;
};

TEST_F(IconButton, LooksFollowMousePressAndLatch) {
    const Pixels normal = Look(IDI_PLAY, Edge::kNone);
    const Pixels hover = Look(IDI_PLAY, Edge::kRaised);
    const Pixels pressed = Look(IDI_PLAY, Edge::kSunken);
    const Pixels latched = Look(IDI_PLAY, Edge::kSunken, true);
    ASSERT_TRUE(normal != hover && hover != pressed && pressed != latched);

    ExpectLook(normal, "at rest");
    Move(Inside());
    ExpectLook(hover, "under the mouse");
    Press();
    ExpectLook(pressed, "pressed");
    Release(Inside());
    EXPECT_EQ(m_row.m_clicks, 1);
    ExpectLook(hover, "still lit after the click");
    Move(Inside());
    ExpectLook(hover, "and after the next move");
    Move(Outside());
    ExpectLook(normal, "left");

    m_row.m_play.SetLatched(TRUE);
    ExpectLook(latched, "latched");
    Move(Inside());
    ExpectLook(latched, "latched under the mouse");
    Press();
    ExpectLook(latched, "latched and pressed");
    Release(Inside());
    Move(Inside());
    Move(Outside());
    m_row.m_play.SetLatched(FALSE);
    ExpectLook(normal, "released");
}

TEST_F(IconButton, TwoIconsShareTheStates) {
    ASSERT_TRUE(m_row.m_play.SetIcons(IDI_PAUSE, IDI_STOP));
    ExpectLook(Look(IDI_STOP, Edge::kNone), "normal icon");
    Move(Inside());
    ExpectLook(Look(IDI_PAUSE, Edge::kRaised), "hover icon");
    Move(Outside());
    m_row.m_play.SetLatched(TRUE);
    ExpectLook(Look(IDI_PAUSE, Edge::kSunken, true), "hover icon while latched");
}

TEST_F(IconButton, DisabledShowsTheIconEmbossed) {
    m_row.m_play.EnableWindow(FALSE);
    const Pixels embossed = Look(IDI_PLAY, Edge::kNone, false, true);
    ASSERT_TRUE(embossed != Look(IDI_PLAY, Edge::kNone));
    ExpectLook(embossed, "disabled");
    m_row.m_play.SetLatched(TRUE);
    ExpectLook(Look(IDI_PLAY, Edge::kSunken, true, true), "disabled and latched");
}

TEST_F(IconButton, DraggingOntoItDoesNotLightItAndDraggingOutPressesNothing) {
    const Pixels normal = Look(IDI_PLAY, Edge::kNone);
    Move(Inside(), Qt::LeftButton);
    ExpectLook(normal, "dragged onto");
    EXPECT_EQ(CWnd::GetCapture(), nullptr);

    Move(Inside());
    Press();
    Move(Outside(), Qt::LeftButton);
    ExpectLook(normal, "dragged out");
    EXPECT_EQ(CWnd::GetCapture(), &m_row.m_play) << "the press still has the mouse";
    Release(Outside());
    EXPECT_EQ(m_row.m_clicks, 0);
    EXPECT_EQ(CWnd::GetCapture(), nullptr);
}

TEST_F(IconButton, HoverTakesTheCaptureAndGivesItBack) {
    Move(Inside());
    EXPECT_EQ(CWnd::GetCapture(), &m_row.m_play);
    Move(Outside());
    EXPECT_EQ(CWnd::GetCapture(), nullptr);
    Move(Inside());
    m_row.m_play.SendMessage(WM_KILLFOCUS);
    ExpectLook(Look(IDI_PLAY, Edge::kNone), "lost the focus");
}

TEST_F(IconButton, DoubleClickIsTwoPresses) {
    Move(Inside());
    Press();
    Release(Inside());
    Press(QEvent::MouseButtonDblClick);
    EXPECT_EQ(CWnd::GetCapture(), &m_row.m_play) << "the second press holds the mouse like the first";
    Release(Inside());
    EXPECT_EQ(m_row.m_clicks, 2);
}

TEST_F(IconButton, MissingResourcesAreRefused) {
    EXPECT_FALSE(m_row.m_play.SetBtnCursor(9999));
    EXPECT_FALSE(m_row.m_play.SetTooltipText(9999));
    EXPECT_TRUE(m_row.m_play.SetBtnCursor(IDC_POINTING_HAND));
    EXPECT_TRUE(m_row.m_play.SetTooltipText(IDS_PLAY));

    EXPECT_FALSE(m_row.m_play.SetIcons(IDI_PAUSE, 9999));
    m_row.m_play.Invalidate();
    ExpectLook(Look(9999, Edge::kNone), "no normal icon");
    Move(Inside());
    ExpectLook(Look(IDI_PAUSE, Edge::kRaised), "the hover icon is there");
    EXPECT_FALSE(m_row.m_play.SetIcons(9999));
    m_row.m_play.Invalidate();
    ExpectLook(Look(9999, Edge::kRaised), "no hover icon");
    Move(Outside());
}

TEST_F(IconButton, ReleasesWhatItReplacesAndWhatItHoldsAtTheEnd) {
    const int before = LiveIconCount();
    {
        ToolRow row;
        // One handle serves both slots; the cursor is one more.
        EXPECT_TRUE(row.m_play.SetBtnCursor(IDC_POINTING_HAND));
        for (const auto& [normal, hover, held] : {std::tuple(IDI_PLAY, 0, 1),
                                                  {IDI_PAUSE, 0, 1},
                                                  {IDI_PLAY, IDI_PAUSE, 2},
                                                  {IDI_PLAY, 9999, 1},
                                                  {9999, 0, 0}}) {
            for (int i = 0; i < 3; ++i) {
                row.m_play.SetIcons(static_cast<UINT>(normal), static_cast<UINT>(hover));
                row.m_play.SetBtnCursor(IDC_POINTING_HAND);
                EXPECT_EQ(LiveIconCount(), before + held + 1) << normal << ", " << hover;
            }
        }
    }
    EXPECT_EQ(LiveIconCount(), before);
}

TEST_F(IconButton, KeyboardReachesItAndPressesIt) {
    m_row.m_play.SetFocus();
    QTest::keyClick(Widget(), Qt::Key_Tab);
    EXPECT_EQ(CWnd::GetFocus(), &m_row.m_stop);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Backtab);
    ASSERT_EQ(CWnd::GetFocus(), &m_row.m_play);
    QTest::keyPress(Widget(), Qt::Key_Space);
    ExpectLook(Look(IDI_PLAY, Edge::kSunken), "Space held");
    QTest::keyRelease(Widget(), Qt::Key_Space);
    EXPECT_EQ(m_row.m_clicks, 1);
    ExpectLook(Look(IDI_PLAY, Edge::kNone), "Space released");
}

TEST_F(IconButton, ItsCursorIsShownOverItUntilItHasNone) {
    QEnterEvent enter(Inside(), Inside(), Widget()->mapToGlobal(Inside()));
    QApplication::sendEvent(Widget(), &enter);
    EXPECT_EQ(Widget()->cursor().shape(), Qt::ArrowCursor);
    ASSERT_TRUE(m_row.m_play.SetBtnCursor(IDC_POINTING_HAND));
    QApplication::sendEvent(Widget(), &enter);
    EXPECT_EQ(Widget()->cursor().shape(), Qt::BitmapCursor);
    EXPECT_EQ(Widget()->cursor().hotSpot(), QPoint(13, 9));
    EXPECT_FALSE(m_row.m_play.SetBtnCursor(9999));
    QApplication::sendEvent(Widget(), &enter);
    EXPECT_EQ(Widget()->cursor().shape(), Qt::ArrowCursor);
}

TEST_F(IconButton, TheTipNamesTheButtonAndShowsWhileTheMouseRests) {
    EXPECT_TRUE(m_row.m_play.SetTooltipText(IDS_OPEN_VOLUME));
    EXPECT_TRUE(m_row.m_play.SetTooltipText(IDS_CLOSE_VOLUME));
    const QString text = QStringLiteral("Close Audio Volume Controls");
    EXPECT_EQ(QAccessible::queryAccessibleInterface(Widget())->text(QAccessible::Name), text);

    Move(Inside());
    EXPECT_FALSE(QToolTip::isVisible());
    EXPECT_TRUE(ui_test::PumpUntil([] { return QToolTip::isVisible(); }));
    EXPECT_EQ(QToolTip::text(), text);
    Press();
    Release(Inside());
    EXPECT_TRUE(ui_test::PumpUntil([] { return !QToolTip::isVisible(); }, 1500)) << "a press hides it";
}

}  // namespace
