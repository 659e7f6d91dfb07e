// SPDX-License-Identifier: MIT
#include "platform/framework/handle_table.h"
#include "platform/framework/window.h"

namespace {

// Only the UI thread adds, removes and changes windows.
HandleTable<Window, HWND> g_windows;
NativeToolkit* g_toolkit = nullptr;
std::atomic<bool> g_drawn = false;

}  // namespace

NativeToolkit* Toolkit() {
    return g_toolkit;
}

void SetToolkit(NativeToolkit* toolkit) {
    g_toolkit = toolkit;
}

std::optional<COLORREF> Window::Ground() const {
    return hasFace ? GetSysColor(COLOR_BTNFACE) : background;
}

bool Window::IsShown() const {
    for (const Window* w = this; w != nullptr; w = w->parent)
        if (!w->visible) return false;
    return true;
}

namespace windows {

Window& Add(std::unique_ptr<Window> window) {
    Window& added = *window;
    added.handle = g_windows.Reserve();
    g_windows.Add(added.handle, std::move(window));
    return added;
}

std::shared_ptr<Window> Remove(HWND handle) {
    return g_windows.Remove(handle);
}

Window* Find(HWND handle) {
    return g_windows.FindHere(handle);
}

std::vector<HWND> All() {
    return g_windows.All();
}

bool Lives(HWND handle) {
    return g_windows.With(handle, [](const Window* window) { return window != nullptr; });
}

std::unique_lock<std::mutex> Keep(HWND handle) {
    return g_windows.Keep(handle);
}

std::shared_ptr<Surface> SurfaceOf(HWND handle) {
    return g_windows.With(handle,
                          [](Window* window) { return window == nullptr ? nullptr : window->surface; });
}

void ReplaceSurface(Window& window) {
    const CRect client = window.ClientRect();
    const NativeWidget::Extent extent = window.native->DeviceExtent();
    const auto ratio = [](int device, int logical) {
        return logical == 0 ? 1.0 : double{1} * device / logical;
    };
    auto surface =
        std::make_shared<Surface>(extent.width, extent.height,
                                  SurfaceScale{ratio(extent.width, client.Width()),
                                               ratio(extent.height, client.Height()), extent.factor});
    g_windows.With(window.handle, [&](Window* found) { found->surface.swap(surface); });
}

void SurfaceDrawn(HWND handle) {
    // No toolkit goes before its last window, so it cannot go meanwhile.
    g_windows.With(handle, [](Window* window) {
        if (window == nullptr || window->surfaceDrawn.exchange(true)) return;
        g_drawn = true;
        if (g_toolkit != nullptr) g_toolkit->Wake();
    });
}

bool TakeDrawn() {
    return g_drawn.exchange(false);
}

}  // namespace windows
