// SPDX-License-Identifier: MIT
#include "platform/qt/input.h"

#include <QApplication>
#include <QCursor>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QWheelEvent>
#include <algorithm>
#include <iterator>
#include <utility>

#include "platform/framework/afxwin.h"
#include "platform/qt/qt_toolkit.h"

namespace {

LPARAM PackPoint(const QPoint& point) {
    return static_cast<LPARAM>(static_cast<std::uint16_t>(point.x()) |
                               static_cast<std::uint32_t>(static_cast<std::uint16_t>(point.y())) << 16U);
}

// Other keys, and those that are pressed with Alt, have the number 0 and stay the toolkit's.
WPARAM VirtualKey(const QKeyEvent& event) {
    constexpr std::pair<int, WPARAM> kKeys[] = {
        {Qt::Key_Backspace, VK_BACK},
        {Qt::Key_Return, VK_RETURN},
        {Qt::Key_Enter, VK_RETURN},
        {Qt::Key_Escape, VK_ESCAPE},
        {Qt::Key_Space, VK_SPACE},
        {Qt::Key_PageUp, VK_PRIOR},
        {Qt::Key_PageDown, VK_NEXT},
        {Qt::Key_End, VK_END},
        {Qt::Key_Home, VK_HOME},
        {Qt::Key_Left, VK_LEFT},
        {Qt::Key_Up, VK_UP},
        {Qt::Key_Right, VK_RIGHT},
        {Qt::Key_Down, VK_DOWN},
        {Qt::Key_Comma, VK_OEM_COMMA},
        {Qt::Key_Period, VK_OEM_PERIOD},
        {Qt::Key_BracketLeft, VK_OEM_4},
        {Qt::Key_BracketRight, VK_OEM_6},
    };
    const int key = event.key();
    if ((event.modifiers() & Qt::AltModifier) != 0) return 0;
    if ((key >= Qt::Key_A && key <= Qt::Key_Z) || (key >= Qt::Key_0 && key <= Qt::Key_9))
        return static_cast<WPARAM>(key);
    const auto* found =
        std::find_if(std::begin(kKeys), std::end(kKeys), [key](const auto& k) { return k.first == key; });
    return found == std::end(kKeys) ? 0 : found->second;
}

// MK_…
WPARAM HeldKeys(Qt::MouseButtons buttons, Qt::KeyboardModifiers modifiers) {
    return ((buttons & Qt::LeftButton) != 0 ? MK_LBUTTON : 0) |
           ((modifiers & Qt::ShiftModifier) != 0 ? MK_SHIFT : 0) |
           ((modifiers & Qt::ControlModifier) != 0 ? MK_CONTROL : 0);
}

constexpr LPARAM kOutside = -1;          // both coordinates −1
constexpr LPARAM kWasDown = 0x40000000;  // the key repeats

}  // namespace

std::optional<MSG> MessageFromEvent(HWND window, QEvent* event) {
    const auto mouse = [&](UINT message) -> std::optional<MSG> {
        const auto* e = static_cast<QMouseEvent*>(event);
        if (message != WM_MOUSEMOVE && e->button() != Qt::LeftButton) return std::nullopt;
        return MSG{window, message, HeldKeys(e->buttons(), e->modifiers()),
                   PackPoint(ToLogical(window, e->position()))};
    };
    switch (event->type()) {
        case QEvent::MouseMove:
            return mouse(WM_MOUSEMOVE);
        case QEvent::MouseButtonPress:
            return mouse(WM_LBUTTONDOWN);
        case QEvent::MouseButtonDblClick:
            return mouse(WM_LBUTTONDBLCLK);
        case QEvent::MouseButtonRelease:
            return mouse(WM_LBUTTONUP);
        case QEvent::Wheel: {
            // The toolkit counts a notch as the framework does. Turning sideways stays its own.
            const auto* e = static_cast<QWheelEvent*>(event);
            const auto delta = static_cast<std::uint16_t>(e->angleDelta().y());
            if (delta == 0) return std::nullopt;
            return MSG{window, WM_MOUSEWHEEL, HeldKeys(e->buttons(), e->modifiers()) | WPARAM{delta} << 16U,
                       PackPoint(e->globalPosition().toPoint())};
        }
        case QEvent::KeyPress: {
            const auto* e = static_cast<QKeyEvent*>(event);
            return MSG{window, WM_KEYDOWN, VirtualKey(*e), 1 | (e->isAutoRepeat() ? kWasDown : 0)};
        }
        case QEvent::FocusIn:
            return MSG{window, WM_SETFOCUS, 0, 0};
        case QEvent::FocusOut:
            return MSG{window, WM_KILLFOCUS, reinterpret_cast<WPARAM>(QtToolkit::Instance().FocusWindow()),
                       0};
        default:
            return std::nullopt;
    }
}

void NotifyPointerStays(const QWidget* widget, HWND window) {
    const QPoint at = QCursor::pos();
    if (QApplication::widgetAt(at) != widget || QApplication::mouseButtons() != Qt::NoButton) return;
    windows::DeliverInput({window, WM_MOUSEMOVE, 0, PackPoint(ToLogical(window, widget->mapFromGlobal(at)))});
}

void NotifyPointerCrossing(HWND window, QEvent::Type type) {
    if (type == QEvent::Enter) {
        windows::Call(window, WM_SETCURSOR, reinterpret_cast<WPARAM>(window),
                      static_cast<LPARAM>(HTCLIENT | WM_MOUSEMOVE << 16U));
        return;
    }
    if (type != QEvent::Leave) return;
    const CWnd* capturing = CWnd::GetCapture();
    if (capturing != nullptr && capturing->GetSafeHwnd() == window) {
        windows::DeliverInput(
            {window, WM_MOUSEMOVE, HeldKeys(QApplication::mouseButtons(), Qt::NoModifier), kOutside});
    }
    QtToolkit::Instance().PointerLeft(window);
}
