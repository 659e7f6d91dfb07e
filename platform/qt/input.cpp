#include "platform/qt/input.h"

#include <QApplication>
#include <QCursor>
#include <QKeyEvent>
#include <QMouseEvent>

#include "platform/framework/afxwin.h"
#include "platform/qt/qt_toolkit.h"

namespace {

LPARAM PackPoint(const QPoint& point) {
    return static_cast<LPARAM>(static_cast<std::uint16_t>(point.x()) |
                               static_cast<std::uint32_t>(static_cast<std::uint16_t>(point.y())) << 16U);
}

// The player only asks for these; other keys have the number 0 and stay the toolkit's.
WPARAM VirtualKey(int key) {
    switch (key) {
        case Qt::Key_Return:
        case Qt::Key_Enter:
            return VK_RETURN;
        case Qt::Key_Escape:
            return VK_ESCAPE;
        case Qt::Key_Space:
            return VK_SPACE;
        default:
            return 0;
    }
}

constexpr LPARAM kOutside = -1;  // both coordinates −1

}  // namespace

std::optional<MSG> MessageFromEvent(HWND window, QEvent* event) {
    const auto mouse = [&](UINT message) -> std::optional<MSG> {
        const auto* e = static_cast<QMouseEvent*>(event);
        if (message != WM_MOUSEMOVE && e->button() != Qt::LeftButton) return std::nullopt;
        const WPARAM keys = (e->buttons() & Qt::LeftButton) != 0 ? MK_LBUTTON : 0;
        return MSG{window, message, keys, PackPoint(e->position().toPoint())};
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
        case QEvent::KeyPress:
            return MSG{window, WM_KEYDOWN, VirtualKey(static_cast<QKeyEvent*>(event)->key()), 0};
        case QEvent::FocusIn:
            return MSG{window, WM_SETFOCUS, 0, 0};
        case QEvent::FocusOut:
            return MSG{window, WM_KILLFOCUS, reinterpret_cast<WPARAM>(QtToolkit::Instance().FocusWindow()),
                       0};
        default:
            return std::nullopt;
    }
}

void TellPointerStays(const QWidget* widget, HWND window) {
    const QPoint at = QCursor::pos();
    if (QApplication::widgetAt(at) != widget || QApplication::mouseButtons() != Qt::NoButton) return;
    windows::DeliverInput({window, WM_MOUSEMOVE, 0, PackPoint(widget->mapFromGlobal(at))});
}

void TellPointerCrossing(HWND window, QEvent::Type type) {
    if (type == QEvent::Enter) {
        windows::Call(window, WM_SETCURSOR, reinterpret_cast<WPARAM>(window),
                      static_cast<LPARAM>(HTCLIENT | WM_MOUSEMOVE << 16U));
        return;
    }
    if (type != QEvent::Leave) return;
    const CWnd* capturing = CWnd::GetCapture();
    if (capturing != nullptr && capturing->GetSafeHwnd() == window) {
        const WPARAM keys = (QApplication::mouseButtons() & Qt::LeftButton) != 0 ? MK_LBUTTON : 0;
        windows::DeliverInput({window, WM_MOUSEMOVE, keys, kOutside});
    }
    QtToolkit::Instance().PointerLeft(window);
}
