// Input from the toolkit as the player's windows hear it.
#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QAction>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QMenuBar>
#include <QMimeData>
#include <QTest>
#include <QToolTip>
#include <QUrl>
#include <QWheelEvent>
#include <string>
#include <utility>
#include <vector>

#include "platform/framework/afxcmn.h"
#include "platform/qt/toolkit.h"
#include "res/resource.h"
#include "tests/support/ui_test.h"

namespace {

// A dialog of the player's resources that notes what it is told.
class Noting : public CDialog {
public:
    explicit Noting(UINT id) {
        Create(id);
        ShowWindow(SW_SHOW);
    }
    struct Command {
        UINT id;
        UINT code;
        friend bool operator==(const Command&, const Command&) = default;
    };
    std::vector<Command> commands;
    std::vector<UINT> system;
    std::vector<std::string> dropped;

    QWidget* Top() const { return WidgetOf(m_hWnd)->window(); }
    LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override {
        if (message == WM_COMMAND) commands.push_back({LOWORD(wParam), HIWORD(wParam)});
        return CDialog::WindowProc(message, wParam, lParam);
    }

protected:
    DECLARE_MESSAGE_MAP()
    void OnSysCommand(UINT command, LPARAM) { system.push_back(command); }
    void OnDropFiles(HDROP drop) {
        for (UINT i = 0; i < DragQueryFileCount(drop); ++i) dropped.push_back(DragQueryFile(drop, i).Str());
    }
    void OnOK() override {}
    void OnCancel() override {}
};

BEGIN_MESSAGE_MAP(Noting, CDialog)
ON_WM_SYSCOMMAND()
ON_WM_DROPFILES()
END_MESSAGE_MAP()

TEST(Input, MenuItemsAndTheirShortcutsSendTheCommand) {
    Noting dialog(IDD_PLAYER_DIALOG);
    dialog.SetCommandShortcut(ID_FILE_OPEN, "Ctrl+O; Media Record");
    auto* bar = dialog.Top()->findChild<QMenuBar*>();
    ASSERT_NE(bar, nullptr);
    ASSERT_EQ(bar->actions().size(), 3);
    QAction* open = bar->actions().at(0)->menu<QMenu*>()->actions().at(0);
    EXPECT_EQ(open->text(), "&Open...");
    EXPECT_EQ(open->shortcut().toString(), "Ctrl+O");
    open->trigger();
    QApplication::setActiveWindow(dialog.Top());
    QTest::keyClick(dialog.Top(), Qt::Key_O, Qt::ControlModifier);
    EXPECT_EQ(dialog.commands, (std::vector<Noting::Command>{{ID_FILE_OPEN, 0}, {ID_FILE_OPEN, 0}}));
}

TEST(Input, TheCloseBoxAsksAndDroppedFilesAreNamed) {
    Noting dialog(IDD_PLAYER_DIALOG);
    dialog.DragAcceptFiles();
    dialog.Top()->close();
    EXPECT_EQ(dialog.system, std::vector<UINT>{SC_CLOSE});
    EXPECT_TRUE(dialog.Top()->isVisible());

    QMimeData data;
    data.setUrls({QUrl::fromLocalFile("/a/b c.trv"), QUrl("http://example.org/x.trv")});
    // A program that is told of a move deletes the file.
    for (const Qt::DropActions offered : {Qt::DropActions(Qt::CopyAction), Qt::DropActions(Qt::MoveAction),
                                          Qt::CopyAction | Qt::MoveAction | Qt::LinkAction}) {
        QDragEnterEvent enter(QPoint(5, 5), offered, &data, Qt::LeftButton, Qt::ShiftModifier);
        QDragMoveEvent move(QPoint(5, 5), offered, &data, Qt::LeftButton, Qt::ShiftModifier);
        QDropEvent drop(QPointF(5, 5), offered, &data, Qt::LeftButton, Qt::ShiftModifier);
        dialog.dropped.clear();
        for (QDropEvent* event : {static_cast<QDropEvent*>(&enter), static_cast<QDropEvent*>(&move), &drop}) {
            event->ignore();
            QCoreApplication::sendEvent(WidgetOf(dialog.m_hWnd), event);
            EXPECT_TRUE(event->isAccepted());
        }
        EXPECT_EQ(drop.dropAction(), offered.testFlag(Qt::CopyAction) ? Qt::CopyAction : Qt::IgnoreAction);
        EXPECT_TRUE(dialog.dropped.empty()) << "the program that they come from is let go first";
        ui_test::Pump();
        EXPECT_EQ(dialog.dropped, std::vector<std::string>{"/a/b c.trv"});
    }
}

// A control of the program's own that takes the focus, keys and the wheel.
class Bar : public CStatic {
public:
    std::vector<std::string> log;
    BOOL turns = TRUE;

protected:
    DECLARE_MESSAGE_MAP()
    void OnKeyDown(UINT key, UINT, UINT flags) {
        log.push_back("key " + std::to_string(key) + ((flags & 0x4000U) != 0 ? " again" : ""));
    }
    BOOL OnMouseWheel(UINT keys, short delta, CPoint) {
        log.push_back("wheel " + std::to_string(delta) + ((keys & MK_SHIFT) != 0 ? " shift" : ""));
        return turns;
    }
    void OnLButtonDown(UINT, CPoint at) { log.push_back("down " + std::to_string(at.x)); }
    void OnLButtonDblClk(UINT, CPoint at) { log.push_back("double " + std::to_string(at.x)); }
    void OnLButtonUp(UINT, CPoint at) { log.push_back("up " + std::to_string(at.x)); }
    void OnSetFocus(CWnd*) { log.push_back("focus"); }
    void OnKillFocus(CWnd*) { log.push_back("no focus"); }
};

BEGIN_MESSAGE_MAP(Bar, CStatic)
ON_WM_KEYDOWN()
ON_WM_MOUSEWHEEL()
ON_WM_LBUTTONDOWN()
ON_WM_LBUTTONDBLCLK()
ON_WM_LBUTTONUP()
ON_WM_SETFOCUS()
ON_WM_KILLFOCUS()
END_MESSAGE_MAP()

TEST(Input, AStaticWithHandlersHearsKeysWheelButtonAndFocus) {
    Noting dialog(IDD_PLAYER_DIALOG);
    Bar bar;
    ui_test::MakeControl(bar, dialog, CRect(0, 0, 100, 20));
    QWidget* widget = WidgetOf(bar.m_hWnd);
    QApplication::setActiveWindow(dialog.Top());
    bar.SetFocus();
    EXPECT_EQ(CWnd::GetFocus(), &bar);
    for (const auto& [key, code] :
         {std::pair(Qt::Key_Left, VK_LEFT), std::pair(Qt::Key_PageDown, VK_NEXT),
          std::pair(Qt::Key_BracketRight, VK_OEM_6), std::pair(Qt::Key_M, WPARAM{'M'}),
          std::pair(Qt::Key_9, WPARAM{'9'}), std::pair(Qt::Key_F3, WPARAM{0})}) {
        bar.log.clear();
        QTest::keyClick(widget, key);
        EXPECT_EQ(bar.log, std::vector<std::string>{"key " + std::to_string(code)});
    }
    bar.log.clear();
    QTest::keyClick(widget, Qt::Key_M, Qt::AltModifier);
    QKeyEvent repeated(QEvent::KeyPress, Qt::Key_Home, Qt::NoModifier, {}, true);
    QCoreApplication::sendEvent(widget, &repeated);
    QTest::mouseClick(widget, Qt::LeftButton, {}, QPoint(40, 5));
    QTest::mouseDClick(widget, Qt::LeftButton, {}, QPoint(41, 5));
    for (const BOOL turns : {TRUE, FALSE}) {
        bar.turns = turns;
        QWheelEvent wheel(QPointF(5, 5), QPointF(5, 5), {}, {0, -240}, Qt::NoButton, Qt::ShiftModifier,
                          Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(widget, &wheel);
        EXPECT_EQ(wheel.isAccepted(), turns != FALSE);
    }
    dialog.SetFocus();
    EXPECT_EQ(bar.log,
              (std::vector<std::string>{"key 0", "key 0", "key 36 again", "down 40", "up 40", "double 41",
                                        "wheel -240 shift", "wheel -240 shift", "no focus"}))
        << "Alt and a key with it have no number";
}

TEST(Input, ATipFollowsItsText) {
    Noting dialog(IDD_PLAYER_DIALOG);
    QApplication::setActiveWindow(dialog.Top());
    CToolTipCtrl tip;
    tip.Create(&dialog);
    tip.SetDelayTime(TTDT_INITIAL, 5);
    tip.AddTool(&dialog, "1:02", CRect(0, 0, 100, 100), 1);
    tip.Activate(TRUE);
    const MSG move{dialog.m_hWnd, WM_MOUSEMOVE, 0, 0};
    const auto shows = [](const char* text) { return QToolTip::isVisible() && QToolTip::text() == text; };
    tip.RelayEvent(&move);
    EXPECT_TRUE(ui_test::PumpUntil([&] { return shows("1:02"); }));
    tip.UpdateTipText("1:03", &dialog, 1);
    tip.RelayEvent(&move);
    EXPECT_TRUE(shows("1:03"));
    const MSG press{dialog.m_hWnd, WM_LBUTTONDOWN, MK_LBUTTON, 0};
    tip.RelayEvent(&press);
    tip.UpdateTipText("1:04", &dialog, 1);
    tip.RelayEvent(&move);
    EXPECT_FALSE(shows("1:04")) << "a press ends it until the pointer comes back";
}

class Filter : public CWinApp {
public:
    int kept = 0;
    BOOL PreTranslateMessage(MSG* message) override {
        if (message->message != WM_KEYDOWN || message->wParam != VK_SPACE)
            return CWinApp::PreTranslateMessage(message);
        ++kept;
        return TRUE;
    }
};

TEST(Input, WhatTheApplicationKeepsNeverReachesTheWindow) {
    Filter app;
    Noting dialog(IDD_PLAYER_DIALOG);
    QTest::keyClick(dialog.Top()->findChild<QAbstractButton*>(), Qt::Key_Space);
    EXPECT_EQ(app.kept, 1);
    EXPECT_TRUE(dialog.commands.empty());
}

}  // namespace
