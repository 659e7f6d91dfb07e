// SPDX-License-Identifier: MIT
// Dialogs as they come out of the resources, to the pixel.
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

}  // namespace
