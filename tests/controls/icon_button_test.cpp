// SPDX-License-Identifier: MIT
#include "controls/icon_button.h"

#include <QAccessible>
#include <QApplication>
#include <QTest>
#include <QToolTip>
#include <QWidget>

#include "platform/framework/afxicon.h"
#include "platform/qt/toolkit.h"
#include "res/resource.h"
#include "tests/support/ui_test.h"

namespace {

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

// What tells the states apart: system colours of the face and of the edge's two halves, and the icon's place.
struct Look {
    int face, topLeft, bottomRight, iconMoved;
};
constexpr Look kNormal = {COLOR_BTNFACE, COLOR_BTNFACE, COLOR_BTNFACE, 0};
constexpr Look kHover = {COLOR_BTNFACE, COLOR_BTNHIGHLIGHT, COLOR_BTNSHADOW, 0};
constexpr Look kPressed = {COLOR_BTNFACE, COLOR_BTNSHADOW, COLOR_BTNHIGHLIGHT, 1};
constexpr Look kLatched = {COLOR_GRAYTEXT, COLOR_BTNSHADOW, COLOR_BTNHIGHLIGHT, 1};

class IconButton : public testing::Test {
protected:
    void SetUp() override {
        m_row.m_play.GetClientRect(m_client);
        ASSERT_TRUE(m_row.m_play.SetIcons(IDI_PLAY));
        m_iconLeft = IconLeft();
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

    COLORREF Pixel(int x, int y) {
        m_row.m_play.UpdateWindow();
        return ui_test::PixelOf(m_row.m_play, x, y);
    }
    // The first column in which the icon shows.
    int IconLeft() {
        for (int x = 1; x < m_client.right - 1; ++x) {
            for (int y = 1; y < m_client.bottom - 1; ++y)
                if (Pixel(x, y) != Pixel(1, 1)) return x;
        }
        return -1;
    }
    void ExpectLook(const Look& look, const char* when) {
        const int right = m_client.right - 1;
        const int bottom = m_client.bottom - 1;
        EXPECT_EQ(Pixel(1, 1), GetSysColor(look.face)) << when;
        for (const auto& [x, y] : {std::pair(0, 0), {0, bottom - 1}, {right - 1, 0}})
            EXPECT_EQ(Pixel(x, y), GetSysColor(look.topLeft)) << when << ", at " << x << ", " << y;
        for (const auto& [x, y] : {std::pair(0, bottom), {right, bottom}, {right, 1}})
            EXPECT_EQ(Pixel(x, y), GetSysColor(look.bottomRight)) << when << ", at " << x << ", " << y;
        EXPECT_EQ(IconLeft(), m_iconLeft + look.iconMoved) << when;
    }

    CWinApp m_app;  // shows its windows their messages first, which is where the tips come from
    ToolRow m_row;
    CRect m_client;
    int m_iconLeft = 0;
};

TEST_F(IconButton, LooksFollowMousePressAndLatch) {
    ASSERT_GT(m_iconLeft, 1);
    ExpectLook(kNormal, "at rest");
    Move(Inside());
    ExpectLook(kHover, "under the mouse");
    Press();
    ExpectLook(kPressed, "pressed");
    Release(Inside());
    Press(QEvent::MouseButtonDblClick);
    EXPECT_EQ(CWnd::GetCapture(), &m_row.m_play) << "the second press holds the mouse like the first";
    Release(Inside());
    EXPECT_EQ(m_row.m_clicks, 2);
    ExpectLook(kHover, "still lit after the click");
    Move(Inside());
    ExpectLook(kHover, "and after the next move");
    m_row.m_play.SendMessage(WM_KILLFOCUS);
    ExpectLook(kNormal, "lost the focus");
    Move(Outside());

    m_row.m_play.SetLatched(TRUE);
    Move(Inside());
    ExpectLook(kLatched, "latched under the mouse");
    Press();
    ExpectLook(kLatched, "latched and pressed");
    Release(Inside());
    Move(Inside());
    Move(Outside());
    m_row.m_play.SetLatched(FALSE);
    ExpectLook(kNormal, "released");
}

TEST_F(IconButton, DraggingOntoItDoesNotLightItAndDraggingOutPressesNothing) {
    Move(Inside(), Qt::LeftButton);
    ExpectLook(kNormal, "dragged onto");
    EXPECT_EQ(CWnd::GetCapture(), nullptr);

    Move(Inside());
    EXPECT_EQ(CWnd::GetCapture(), &m_row.m_play);
    Press();
    Move(Outside(), Qt::LeftButton);
    ExpectLook(kNormal, "dragged out");
    EXPECT_EQ(CWnd::GetCapture(), &m_row.m_play) << "the press still has the mouse";
    Release(Outside());
    EXPECT_EQ(m_row.m_clicks, 0);
    EXPECT_EQ(CWnd::GetCapture(), nullptr);
}

TEST_F(IconButton, ReleasesWhatItReplacesAndWhatItHoldsAtTheEnd) {
    const ui_test::IconWatch icons;
    {
        ToolRow row;
        for (const UINT icon : std::initializer_list<UINT>{IDI_PLAY, IDI_PAUSE, IDI_PLAY}) {
            EXPECT_TRUE(row.m_play.SetIcons(icon));
            EXPECT_TRUE(row.m_play.SetBtnCursor(IDC_POINTING_HAND));
            EXPECT_EQ(icons.Live(), 2) << "one icon for both states, and the cursor";
        }
    }
    EXPECT_EQ(icons.Live(), 0);
}

TEST_F(IconButton, KeyboardReachesItAndPressesIt) {
    m_row.m_play.SetFocus();
    QTest::keyClick(Widget(), Qt::Key_Tab);
    EXPECT_EQ(CWnd::GetFocus(), &m_row.m_stop);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Backtab);
    QTest::keyPress(Widget(), Qt::Key_Space);
    ExpectLook(kPressed, "Space held");
    QTest::keyRelease(Widget(), Qt::Key_Space);
    EXPECT_EQ(m_row.m_clicks, 1);
}

TEST_F(IconButton, ItsCursorAndTipShowUnderTheMouseAndTheTipNamesIt) {
    ASSERT_TRUE(m_row.m_play.SetBtnCursor(IDC_POINTING_HAND));
    QEnterEvent enter(Inside(), Inside(), Widget()->mapToGlobal(Inside()));
    QApplication::sendEvent(Widget(), &enter);
    EXPECT_EQ(Widget()->cursor().hotSpot(), QPoint(13, 9));

    EXPECT_TRUE(m_row.m_play.SetTooltipText(IDS_OPEN_VOLUME));
    EXPECT_TRUE(m_row.m_play.SetTooltipText(IDS_CLOSE_VOLUME));
    const QString text = QStringLiteral("Close Audio Volume Controls");
    EXPECT_EQ(QAccessible::queryAccessibleInterface(Widget())->text(QAccessible::Name), text);
    Move(Inside());
    EXPECT_TRUE(ui_test::PumpUntil([] { return QToolTip::isVisible(); }));
    EXPECT_EQ(QToolTip::text(), text);
    Press();
    Release(Inside());
    EXPECT_TRUE(ui_test::PumpUntil([] { return !QToolTip::isVisible(); }, 1500)) << "a press hides it";
}

}  // namespace
