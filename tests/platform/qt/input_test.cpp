// SPDX-License-Identifier: MIT
// Input from the toolkit as the player's windows hear it.
#include <gtest/gtest.h>

#include <QAction>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QMenuBar>
#include <QMimeData>
#include <QTest>
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
    std::vector<WPARAM> commands;  // number, and the notification's code above it
    std::vector<UINT> system;
    std::vector<std::string> dropped;

    QWidget* Top() const { return WidgetOf(m_hWnd)->window(); }
    LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override {
        if (message == WM_COMMAND) commands.push_back(wParam);
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
    EXPECT_EQ(dialog.commands, (std::vector<WPARAM>{ID_FILE_OPEN, ID_FILE_OPEN}));
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

// A control of the program's own that takes the focus, keys, the button and the wheel.
class Bar : public CStatic {
public:
    std::vector<std::string> log;
    BOOL turns = TRUE;

    LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override {
        const auto at = std::to_string(LOWORD(static_cast<DWORD_PTR>(lParam)));
        const std::string again = (lParam & 0x40000000) != 0 ? " again" : "";
        if (message == WM_KEYDOWN) log.push_back("key " + std::to_string(wParam) + again);
        if (message == WM_LBUTTONDOWN) log.push_back("down " + at);
        if (message == WM_LBUTTONDBLCLK) log.push_back("double " + at);
        if (message == WM_LBUTTONUP) log.push_back("up " + at);
        if (message == WM_SETFOCUS) log.push_back("focus");
        if (message == WM_KILLFOCUS) log.push_back("no focus");
        if (message != WM_MOUSEWHEEL) return 0;
        log.push_back("wheel " + std::to_string(static_cast<short>(HIWORD(wParam))) +
                      ((wParam & MK_SHIFT) != 0 ? " shift" : ""));
        return turns;
    }
};

TEST(Input, AControlHearsKeysWheelButtonAndFocus) {
    Noting dialog(IDD_PLAYER_DIALOG);
    Bar bar;
    ui_test::MakeControl(bar, dialog, CRect(0, 0, 100, 20));
    QWidget* widget = WidgetOf(bar.m_hWnd);
    QApplication::setActiveWindow(dialog.Top());
    bar.SetFocus();
    EXPECT_EQ(CWnd::GetFocus(), &bar);
    bar.log.clear();
    for (const Qt::Key key :
         {Qt::Key_Left, Qt::Key_PageDown, Qt::Key_BracketRight, Qt::Key_M, Qt::Key_9, Qt::Key_F3})
        QTest::keyClick(widget, key);
    QTest::keyClick(widget, Qt::Key_M, Qt::AltModifier);
    QKeyEvent repeated(QEvent::KeyPress, Qt::Key_Home, Qt::NoModifier, {}, true);
    QCoreApplication::sendEvent(widget, &repeated);
    EXPECT_EQ(bar.log, (std::vector<std::string>{"key 37", "key 34", "key 221", "key 77", "key 57", "key 0",
                                                 "key 0", "key 0", "key 36 again"}))
        << "Alt and a key with it have no number";
    bar.log.clear();
    QTest::mouseClick(widget, Qt::LeftButton, {}, QPoint(40, 5));
    QTest::mouseDClick(widget, Qt::LeftButton, {}, QPoint(41, 5));
    for (const BOOL turns : {TRUE, FALSE}) {
        bar.turns = turns;
        QWheelEvent wheel(QPointF(5, 5), QPointF(5, 5), {}, {0, -240}, Qt::NoButton, Qt::ShiftModifier,
                          Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(widget, &wheel);
        EXPECT_EQ(wheel.isAccepted(), turns != FALSE) << "what it does not turn is its parent's";
    }
    dialog.SetFocus();
    EXPECT_EQ(bar.log, (std::vector<std::string>{"down 40", "up 40", "double 41", "wheel -240 shift",
                                                 "wheel -240 shift", "no focus"}));
}

}  // namespace
