#include "tests/controls/ui_test.h"

#include <QCoreApplication>
#include <cstdlib>

#include "res/player_resources.h"

namespace ui_test {

HostDialog::HostDialog(UINT templateId) {
    Create(templateId);
    ShowWindow(SW_SHOW);
    Pump();
}

BOOL MakeControl(CWnd& control, CWnd& parent, const RECT& rect) {
    return control.CreateEx(0, AfxRegisterWndClass(0), "", WS_CHILD | WS_VISIBLE, rect, &parent, 1);
}

COLORREF PixelOf(CWnd& window, int x, int y) {
    const CClientDC dc(&window);
    return dc.GetPixel(x, y);
}

void Scribble(CWnd& window) {
    CClientDC dc(&window);
    CRect client;
    window.GetClientRect(client);
    dc.FillSolidRect(client, kScribble);
}

bool IsScribbled(CWnd& window, int x, int y) {
    return PixelOf(window, x, y) == kScribble;
}

void Pump() {
    for (int i = 0; i < 3; ++i) QCoreApplication::processEvents();
}

}  // namespace ui_test

namespace {

class TestApp : public CWinApp {
public:
    BOOL InitInstance() override {
        m_result = RUN_ALL_TESTS();
        return FALSE;
    }
    int m_result = 1;
};

TestApp g_app;

}  // namespace

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    if (GTEST_FLAG_GET(list_tests)) return RUN_ALL_TESTS();
    // Never a window on the desktop of whoever runs this by hand.
    setenv("QT_QPA_PLATFORM", "offscreen", 1);
    UsePlayerResources();
    AfxWinMain(argc, argv);
    return g_app.m_result;
}
