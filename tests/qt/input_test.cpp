// Input from the toolkit as the player's windows hear it.
#include <gtest/gtest.h>

#include <QAction>
#include <QCheckBox>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QMenuBar>
#include <QMimeData>
#include <QSlider>
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
    std::vector<int> positions;  // of the slider, as it stands when the scroll message comes
    std::vector<UINT> system;
    std::vector<std::string> dropped;
    CSliderCtrl slider;

    QWidget* Top() const { return WidgetOf(m_hWnd)->window(); }
    LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override {
        if (message == WM_COMMAND) commands.push_back({LOWORD(wParam), HIWORD(wParam)});
        return CDialog::WindowProc(message, wParam, lParam);
    }

protected:
    DECLARE_MESSAGE_MAP()
    void OnVScroll(UINT, UINT, CScrollBar* bar) {
        if (bar->GetSafeHwnd() == slider.GetSafeHwnd()) positions.push_back(slider.GetPos());
    }
    void OnSysCommand(UINT command, LPARAM) { system.push_back(command); }
    void OnDropFiles(HDROP drop) {
        for (UINT i = 0; i < DragQueryFileCount(drop); ++i) dropped.push_back(DragQueryFile(drop, i).Str());
    }
    void OnOK() override {}
    void OnCancel() override {}
};

BEGIN_MESSAGE_MAP(Noting, CDialog)
ON_WM_VSCROLL()
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

TEST(Input, TabReachesButtonsAndSpacePressesThem) {
    Noting dialog(IDD_PLAYER_DIALOG);
    QApplication::setActiveWindow(dialog.Top());
    QWidget* first = dialog.Top()->findChild<QAbstractButton*>();
    first->setFocus();
    QTest::keyClick(first, Qt::Key_Space);
    QTest::keyClick(first, Qt::Key_Tab);
    ASSERT_NE(QApplication::focusWidget(), first);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Space);
    EXPECT_EQ(dialog.commands, (std::vector<Noting::Command>{{1000, BN_CLICKED}, {1001, BN_CLICKED}}));
}

// A vertical trackbar has its minimum at the top, and the keys move the thumb the way they point.
TEST(Input, SliderKeysMoveTheThumbTheWayTheyPoint) {
    Noting dialog(IDD_VOLUME);
    CDataExchange dx(&dialog, FALSE);
    DDX_Control(&dx, IDC_MASTER_VOLUME, dialog.slider);
    dialog.slider.SetRange(0, 65535);
    dialog.slider.SetPos(30000);
    EXPECT_TRUE(dialog.positions.empty()) << "what the program sets is not told back";
    auto* widget = qobject_cast<QSlider*>(WidgetOf(dialog.slider.m_hWnd));
    ASSERT_NE(widget, nullptr);
    const int at = dialog.slider.GetPos();
    const struct {
        Qt::Key key;
        int direction;
    } cases[] = {{Qt::Key_Up, -1},   {Qt::Key_Down, 1},    {Qt::Key_Left, -1},
                 {Qt::Key_Right, 1}, {Qt::Key_PageUp, -1}, {Qt::Key_PageDown, 1}};
    for (const auto& c : cases) {
        dialog.slider.SetPos(at);
        dialog.positions.clear();
        QTest::keyClick(widget, c.key);
        ASSERT_EQ(dialog.positions.size(), 1U) << c.key;
        EXPECT_GT(c.direction * (dialog.positions[0] - at), 0) << c.key;
    }
    QTest::keyClick(widget, Qt::Key_Home);
    EXPECT_EQ(dialog.slider.GetPos(), 0);
    QTest::keyClick(widget, Qt::Key_End);
    EXPECT_EQ(dialog.slider.GetPos(), 65535);
}

TEST(Input, CheckBoxesToggleAndTell) {
    Noting dialog(IDD_VOLUME);
    CButton box;
    CDataExchange dx(&dialog, FALSE);
    DDX_Control(&dx, IDC_MASTER_MUTE, box);
    box.SetCheck(1);
    EXPECT_TRUE(dialog.commands.empty());
    QTest::mouseClick(WidgetOf(box.m_hWnd), Qt::LeftButton, {}, QPoint(6, 8));
    EXPECT_EQ(box.GetCheck(), 0);
    EXPECT_EQ(dialog.commands, (std::vector<Noting::Command>{{IDC_MASTER_MUTE, BN_CLICKED}}));
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
