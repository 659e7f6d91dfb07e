// SPDX-License-Identifier: MIT
// What the window classes do with the messages that no handler takes.
#include "platform/framework/afxcmn.h"
#include "platform/framework/window.h"

namespace {

LRESULT DefaultButton(Window& window, UINT message, WPARAM wParam, LPARAM lParam) {
    const HWND handle = window.handle;
    switch (message) {
        case WM_PAINT: {
            CPaintDC dc(handle);
            DRAWITEMSTRUCT item{window.native->ItemState(), &dc, window.ClientRect()};
            if (window.object != nullptr)
                window.object->SendMessage(WM_DRAWITEM, window.id, reinterpret_cast<LPARAM>(&item));
            return 0;
        }
        case BM_SETSTYLE:
            window.style = (window.style & ~DWORD{0xFF}) | (LOWORD(wParam) & 0xFFU);
            window.native->ControlMessage(message, wParam, lParam);
            windows::Invalidate(window, window.ClientRect(), true);
            return 0;
        case WM_LBUTTONDOWN:
            if (window.object != nullptr) window.object->SetCapture();
            break;
        case WM_LBUTTONUP:
            // Before the click is reported, as the handler may do anything.
            ReleaseCapture();
            break;
        default:
            break;
    }
    if (Window* left = windows::Find(handle)) return left->native->ControlMessage(message, wParam, lParam);
    return 0;
}

LRESULT DefaultSysCommand(Window& window, WPARAM command) {
    switch (command) {
        case SC_CLOSE:
            return windows::Call(window.handle, WM_CLOSE, 0, 0);
        case SC_MINIMIZE:
            window.native->Show(SW_MINIMIZE);
            return 0;
        case SC_RESTORE:
            window.native->Show(SW_RESTORE);
            return 0;
        default:
            return 0;
    }
}

}  // namespace

namespace windows {

LRESULT CallDefault(HWND handle, UINT message, WPARAM wParam, LPARAM lParam) {
    Window* window = Find(handle);
    if (window == nullptr) return 0;
    if (window->kind == Window::Kind::kButton) return DefaultButton(*window, message, wParam, lParam);
    if (window->kind == Window::Kind::kTrackbar)
        return window->native->ControlMessage(message, wParam, lParam);
    switch (message) {
        case WM_PAINT:
            if (window->kind == Window::Kind::kStatic)
                PaintStatic(*window);
            else
                CPaintDC{handle};
            return 0;
        case WM_CLOSE:
            // A dialog asks itself to cancel; the answer is OnCancel's.
            if (window->kind == Window::Kind::kDialog)
                PostMessage(handle, WM_COMMAND, IDCANCEL, 0);
            else
                Destroy(handle);
            return 0;
        case WM_SIZE:
            if (window->redrawOnResize) Invalidate(*window, window->ClientRect(), true);
            return 0;
        case WM_SYSCOMMAND:
            return DefaultSysCommand(*window, wParam);
        case WM_SETICON:
            // The desktop chooses among the sizes itself.
            if (wParam == ICON_BIG) window->native->SetIcon(IconImages(reinterpret_cast<HICON>(lParam)));
            return 0;
        case WM_SETCURSOR:
            window->native->SetCursor(nullptr);
            return 0;
        default:
            return window->native->ControlMessage(message, wParam, lParam);
    }
}

}  // namespace windows
