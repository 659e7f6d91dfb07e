// SPDX-License-Identifier: MIT
#include "tests/support/ui_test.h"

#include <QApplication>
#include <QDialog>
#include <QMessageBox>
#include <QTimer>
#include <algorithm>
#include <cstdlib>

#include "platform/framework/window.h"
#include "platform/qt/toolkit.h"
#include "res/player_resources.h"
#include "res/resource.h"
#include "tests/support/watch.h"

namespace ui_test {
namespace {

constexpr COLORREF kScribble = RGB(0x12, 0x34, 0x56);

}  // namespace

void Pump() {
    for (int i = 0; i < 3; ++i) QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

void PumpFor(int milliseconds) {
    PumpUntil([] { return false; }, milliseconds);
}

bool PumpUntil(const std::function<bool()>& condition, int milliseconds) {
    return watch::Eventually(condition, std::chrono::milliseconds(milliseconds), [] {
        // Woken at least this often, so that what no event announces is seen promptly.
        QTimer wake;
        wake.start(1);
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    });
}

HostDialog::HostDialog(UINT templateId) {
    Create(templateId);
    ShowWindow(SW_SHOW);
    Pump();
}

BOOL MakeControl(CWnd& control, CWnd& parent, const RECT& rect) {
    return control.CreateEx(0, AfxRegisterWndClass(0), "", WS_CHILD | WS_VISIBLE, rect, &parent, 1);
}

std::string TextOf(const CWnd& window) {
    CString text;
    window.GetWindowText(text);
    return text.Str();
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

std::uintptr_t IconWatch::NextHandle() {
    const HICON icon = LoadImage(IDI_PLAY, IMAGE_ICON);
    DestroyIcon(icon);
    return reinterpret_cast<std::uintptr_t>(icon);
}

int IconWatch::Live() const {
    int live = 0;
    for (std::uintptr_t handle = NextHandle(); handle > m_first; --handle)
        if (IconImage(reinterpret_cast<HICON>(handle)) != nullptr) ++live;
    return live;
}

bool HasControlNamed(const std::string& name) {
    const auto widgets = QApplication::allWidgets();
    return std::any_of(widgets.begin(), widgets.end(),
                       [&](const QWidget* widget) { return widget->accessibleName().toStdString() == name; });
}

Modal WithModal(const std::function<void()>& action, const std::function<void(const Modal&)>& underIt) {
    Modal modal;
    QTimer look;
    QObject::connect(&look, &QTimer::timeout, [&] {
        QWidget* widget = QApplication::activeModalWidget();
        if (widget == nullptr) return;
        look.stop();
        modal.title = widget->windowTitle().toStdString();
        if (const auto* box = qobject_cast<QMessageBox*>(widget)) modal.text = box->text().toStdString();
        modal.close = [widget] { widget->close(); };
        if (underIt) {
            underIt(modal);
        } else {
            modal.close();
        }
    });
    look.start(1);
    action();
    EXPECT_TRUE(modal.close) << "no modal window came up";
    return modal;
}

}  // namespace ui_test

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    if (GTEST_FLAG_GET(list_tests)) return RUN_ALL_TESTS();
    // Never a window on the desktop of whoever runs this by hand.
    setenv("QT_QPA_PLATFORM", "offscreen", 1);
    const auto toolkit = CreateQtToolkit(argc, argv);
    SetToolkit(toolkit.get());
    UsePlayerResources();
    const int result = RUN_ALL_TESTS();
    for (const HWND window : windows::All()) windows::Destroy(window);
    SetToolkit(nullptr);
    return result;
}
