// Dialogs as they come out of the resources: sizes to the pixel, bindings, texts that fit.
#include <gtest/gtest.h>

#include "platform/framework/afxcmn.h"
#include "platform/framework/window.h"
#include "res/resource.h"
#include "tests/support/ui_test.h"

namespace {

class TestDialog : public CDialog {
public:
    explicit TestDialog(UINT id, CWnd* parent = nullptr) { Create(id, parent); }
    CRect ControlClient(int id) {
        CStatic control;
        for (const Window* child : windows::Find(m_hWnd)->children)
            if (child->id == static_cast<UINT>(id)) return child->ClientRect();
        return CRect(0, 0, -1, -1);
    }
};

// The pixels of the position bar, the picture and the trace depend on these.
TEST(Dialogs, ClientSizesOfThePlayersFrames) {
    TestDialog player(IDD_PLAYER_DIALOG);
    CRect client;
    player.GetClientRect(client);
    EXPECT_EQ(client, CRect(0, 0, 368, 379));
    EXPECT_EQ(player.ControlClient(1004), CRect(0, 0, 345, 308));

    CStatic frame;
    CDataExchange dx(&player, FALSE);
    DDX_Control(&dx, 1004, frame);
    TestDialog panel(IDD_MESSAGE_PANEL, &frame);
    panel.GetClientRect(client);
    EXPECT_EQ(client, CRect(0, 0, 347, 312));
    // A little larger than its frame: it is centred, and cut by the frame.
    panel.CenterWindow();
    EXPECT_EQ(windows::Find(panel.m_hWnd)->rect, CRect(-1, -2, 346, 310));
}

TEST(Dialogs, EveryTextFitsItsRectangle) {
    TestDialog player(IDD_PLAYER_DIALOG);
    for (const UINT id : {static_cast<UINT>(IDD_ABOUTBOX), static_cast<UINT>(IDD_PLAYER_DIALOG),
                          static_cast<UINT>(IDD_MESSAGE_PANEL), static_cast<UINT>(IDD_VOLUME)}) {
        TestDialog dialog(id, &player);
        for (const Window* child : windows::Find(dialog.m_hWnd)->children) {
            std::string text = child->text;
            // What the player puts there: the widest of both time texts.
            if (child->id == 1008 || child->id == 1011) text = "99 mins, 60.0 secs ";
            int lines = 0;
            for (std::size_t start = 0; start <= text.size(); ++lines) {
                const std::size_t end = std::min(text.find('\n', start), text.size());
                const std::string line = text.substr(start, end - start);
                // A check box has its box and a gap before the text, a push button its edges.
                const int taken = child->kind != Window::Kind::kButton     ? 0
                                  : child->ButtonType() == BS_AUTOCHECKBOX ? 20
                                                                           : 8;
                EXPECT_LE(Toolkit()->TextExtent(line).cx + taken, child->ClientRect().Width())
                    << "dialog " << id << ": " << line;
                start = end + 1;
            }
            if (!text.empty()) {
                EXPECT_LE(lines * Toolkit()->TextExtent("X").cy, child->ClientRect().Height() + 1)
                    << "dialog " << id << ": " << text;
            }
        }
    }
}

TEST(Dialogs, AnUnsupportedBindingEndsTheProgram) {
    TestDialog player(IDD_PLAYER_DIALOG);
    CStatic control;
    CDataExchange dx(&player, FALSE);
    EXPECT_DEATH(DDX_Control(&dx, 4711, control), "4711");
}

class EndingDialog : public CDialog {
public:
    using CDialog::CDialog;
    BOOL OnInitDialog() override {
        CDialog::OnInitDialog();
        PostMessage(WM_COMMAND, IDOK, 0);
        return TRUE;
    }
};

TEST(Dialogs, AModalOneRunsUntilItEnds) {
    EndingDialog dialog(IDD_ABOUTBOX);
    EXPECT_EQ(dialog.DoModal(), IDOK);
    EXPECT_EQ(dialog.m_hWnd, nullptr);
    EXPECT_EQ(dialog.DoModal(), IDOK) << "and may run again";
}

}  // namespace
