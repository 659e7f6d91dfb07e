#include <algorithm>
#include <mutex>
#include <shared_mutex>
#include <unordered_map>

#include "platform/framework/window.h"

namespace {

std::shared_mutex g_mutex;
std::unordered_map<HWND, std::unique_ptr<Window>> g_windows;
std::uintptr_t g_lastHandle = 0x100;  // small numbers are left to be recognised as mistakes
NativeToolkit* g_toolkit = nullptr;

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
    const std::unique_lock lock(g_mutex);
    window->handle = reinterpret_cast<HWND>(++g_lastHandle);
    Window& added = *window;
    g_windows.emplace(added.handle, std::move(window));
    return added;
}

std::unique_ptr<Window> Remove(HWND handle) {
    const std::unique_lock lock(g_mutex);
    const auto found = g_windows.find(handle);
    if (found == g_windows.end()) return nullptr;
    std::unique_ptr<Window> window = std::move(found->second);
    g_windows.erase(found);
    return window;
}

Window* Find(HWND handle) {
    // Only the UI thread changes the table, so it may read it without the lock.
    const auto found = g_windows.find(handle);
    return found == g_windows.end() ? nullptr : found->second.get();
}

std::vector<HWND> All() {
    std::vector<HWND> handles;
    handles.reserve(g_windows.size());
    for (const auto& [handle, window] : g_windows) handles.push_back(handle);
    std::sort(handles.begin(), handles.end());
    return handles;
}

bool Lives(HWND handle) {
    const std::shared_lock lock(g_mutex);
    return g_windows.contains(handle);
}

std::shared_lock<std::shared_mutex> Keep(HWND handle) {
    std::shared_lock lock(g_mutex);
    if (!g_windows.contains(handle)) lock.unlock();
    return lock;
}

std::shared_ptr<Surface> SurfaceOf(HWND handle) {
    const std::shared_lock lock(g_mutex);
    const auto found = g_windows.find(handle);
    return found == g_windows.end() ? nullptr : found->second->surface;
}

void ReplaceSurface(Window& window, int width, int height) {
    auto surface = std::make_shared<Surface>(width, height);
    const std::unique_lock lock(g_mutex);
    window.surface = std::move(surface);
}

void SurfaceDrawn(HWND handle) {
    {
        const std::shared_lock lock(g_mutex);
        const auto found = g_windows.find(handle);
        if (found == g_windows.end() || found->second->surfaceDrawn.exchange(true)) return;
    }
    if (g_toolkit != nullptr) g_toolkit->Wake();
}

}  // namespace windows
