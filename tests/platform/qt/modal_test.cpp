// SPDX-License-Identifier: MIT
// What a nested loop, a change of the desktop's colours and a refusal look like from the player's side.
#include <gtest/gtest.h>

#include <QApplication>
#include <QTimer>
#include <QWidget>
#include <thread>

#include "platform/framework/afxcmn.h"
#include "res/resource.h"
#include "tests/support/ui_test.h"

namespace {

constexpr UINT kShowBox = WM_USER + 1;
constexpr UINT kClose = WM_USER + 2;

class Asked : public CDialog {
public:
    Asked() {
        Create(IDD_VOLUME);
        ShowWindow(SW_SHOW);
    }
    bool boxUp = false;
    bool heardInBox = false;

protected:
    DECLARE_MESSAGE_MAP()
    LRESULT OnShowBox(WPARAM, LPARAM) {
        boxUp = true;
        MessageBox("text", "caption", MB_OK);
        boxUp = false;
        return 0;
    }
    LRESULT OnCloseBox(WPARAM, LPARAM) {
        heardInBox = boxUp;
        DestroyWindow();
        return 0;
    }
};

BEGIN_MESSAGE_MAP(Asked, CDialog)
ON_MESSAGE(kShowBox, OnShowBox)
ON_MESSAGE(kClose, OnCloseBox)
END_MESSAGE_MAP()

TEST(Modal, WhatWaitsBehindAMessageThatOpensABoxIsDeliveredWhileTheBoxIsUp) {
    Asked window;
    window.PostMessage(kShowBox);
    window.PostMessage(kClose);
    // Should the second message wait for the box, somebody must close it.
    QTimer::singleShot(3000, [] {
        if (QWidget* box = QApplication::activeModalWidget()) box->close();
    });
    ui_test::PumpUntil([&] { return window.m_hWnd == nullptr; });
    EXPECT_TRUE(window.heardInBox);
}

TEST(Colors, AreTakenAnewWhenTheDesktopsChange) {
    Asked window;
    ui_test::Pump();
    const QPalette before = QApplication::palette();
    QPalette dark = before;
    dark.setColor(QPalette::Window, QColor(10, 20, 30));
    QApplication::setPalette(dark);
    ui_test::Pump();
    CClientDC dc(&window);
    EXPECT_EQ(dc.GetPixel(0, 0), RGB(10, 20, 30));
    QApplication::setPalette(before);
    ui_test::Pump();
    EXPECT_NE(dc.GetPixel(0, 0), RGB(10, 20, 30));
}

// Nothing that the layer does not have is taken in silence.
TEST(RefusalsDeathTest, NameWhatIsMissing) {
    Asked window;
    const CRect rect(0, 0, 9, 9);
    const LPCTSTR plain = AfxRegisterWndClass(0);
    const auto nothing = [](LPVOID) -> UINT { return 0; };
    CStatic control;
    CDataExchange dx(&window, FALSE);
    EXPECT_DEATH(DDX_Control(&dx, 4711, control), "4711");
    EXPECT_DEATH(CDialog().Create(4711), "dialog: 0x1267");
    EXPECT_DEATH(CWnd().CreateEx(0, "none", "", WS_CHILD, rect, &window, 0), "window class: none");
    EXPECT_DEATH(CWnd().CreateEx(0, plain, "", WS_CHILD | 0x00200000U, rect, &window, 0), "0x40200000");
    EXPECT_DEATH(window.MessageBox("", "", 0x0004), "message box: 0x4");
    EXPECT_DEATH(AfxBeginThread(nothing, nullptr, 2), "priority");
    EXPECT_DEATH(std::thread([&] { window.SendMessage(kClose); }).join(), "another thread");
    EXPECT_DEATH(CPen(PS_SOLID, 2, 0), "pen");
}

}  // namespace
