// Input from the toolkit as the player's windows hear it.
#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QAction>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QMenuBar>
#include <QMimeData>
#include <QTest>
#include <QUrl>
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
    QDragEnterEvent enter(QPoint(5, 5), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(WidgetOf(dialog.m_hWnd), &enter);
    EXPECT_TRUE(enter.isAccepted());
    QDropEvent drop(QPointF(5, 5), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(WidgetOf(dialog.m_hWnd), &drop);
    EXPECT_TRUE(dialog.dropped.empty()) << "the program that they come from is let go first";
    ui_test::Pump();
    EXPECT_EQ(dialog.dropped, std::vector<std::string>{"/a/b c.trv"});
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
