// SPDX-License-Identifier: MIT
// Creating and destroying windows.
#include <algorithm>

#include "platform/framework/afxwin.h"
#include "platform/framework/window.h"

namespace windows {

int BorderWidth(Window::Kind kind, DWORD style, DWORD exStyle) {
    // A top-level window's frame belongs to the window manager and takes nothing from the client area.
    if ((style & WS_CHILD) == 0) return 0;
    int width = (style & WS_BORDER) != 0 ? 1 : 0;
    const bool sunkenStatic = kind == Window::Kind::kStatic && (style & SS_SUNKEN) != 0;
    if ((exStyle & WS_EX_STATICEDGE) != 0 || sunkenStatic) width += 1;
    return width;
}

Window& Create(std::unique_ptr<Window> made, CWnd* object) {
    Window& window = Add(std::move(made));
    window.border = BorderWidth(window.kind, window.style, window.exStyle);
    window.enabled = (window.style & WS_DISABLED) == 0;
    window.object = object;
    if (object != nullptr) object->m_hWnd = window.handle;
    if (window.parent != nullptr) window.parent->children.push_back(&window);
    const CRect client = window.ClientRect();
    window.native = Toolkit()->CreateNativeWidget(window);
    ReplaceSurface(window);
    const HWND handle = window.handle;
    Call(handle, WM_CREATE, 0, 0);
    Call(handle, WM_SIZE, 0, static_cast<LPARAM>(client.bottom << 16 | client.right));
    Invalidate(window, client, true);
    return window;
}

void Destroy(HWND handle) {
    Window* window = Find(handle);
    if (window == nullptr || window->destroying) return;
    window->destroying = true;
    if (window->IsTopLevel()) {
        for (const HWND other : All()) {
            const Window* owned = Find(other);
            if (owned != nullptr && owned->owner == handle) Destroy(other);
        }
        window->native->Show(SW_HIDE);
    }
    Call(handle, WM_DESTROY, 0, 0);
    // A handler may destroy or add children; each round takes one that is left.
    while (!window->children.empty()) {
        Window* child = window->children.back();
        Destroy(child->handle);
        std::erase(window->children, child);
    }
    if (CWnd::GetCapture() != nullptr && CWnd::GetCapture()->m_hWnd == handle) ReleaseCapture();
    Call(handle, WM_NCDESTROY, 0, 0);
    const std::shared_ptr<Window> gone = Remove(handle);
    if (gone->parent != nullptr) std::erase(gone->parent->children, gone.get());
}

}  // namespace windows
