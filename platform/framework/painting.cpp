// SPDX-License-Identifier: MIT
// When windows are painted. Their pictures are retained, so WM_PAINT comes only for what the player has
// invalidated, never because another window was in front.
#include <utility>

#include "platform/framework/afxcmn.h"
#include "platform/framework/window.h"

namespace {

// Whether a window may wait for WM_PAINT. Most of what is posted while a message plays changes no pixel.
bool g_unpainted = false;

}  // namespace

namespace windows {

void PaintSoon() {
    g_unpainted = true;
    if (Toolkit() != nullptr) Toolkit()->Wake();
}

void Invalidate(Window& window, const RECT& area, bool erase) {
    if (!window.PaintsSurface()) return;
    CRect inside;
    const CRect client = window.ClientRect();
    if (inside.IntersectRect(&area, &client) == FALSE) return;
    const bool first = window.invalid.IsRectEmpty() != FALSE;
    window.invalid =
        first ? inside
              : CRect(std::min(window.invalid.left, inside.left), std::min(window.invalid.top, inside.top),
                      std::max(window.invalid.right, inside.right),
                      std::max(window.invalid.bottom, inside.bottom));
    window.erase = window.erase || erase;
    if (first) PaintSoon();
}

void PaintNow(HWND handle) {
    const Window* window = Find(handle);
    if (window == nullptr || window->invalid.IsRectEmpty() != FALSE || !window->IsShown()) return;
    Call(handle, WM_PAINT, 0, 0);
    // A handler that created no paint context leaves nothing waiting, or the window would be asked forever.
    if (Window* after = Find(handle)) {
        after->invalid = CRect();
        after->erase = false;
    }
}

CRect BeginPaint(Window& window, bool* erased) {
    const CRect area = window.invalid;
    const bool erase = window.erase;
    window.invalid = CRect();
    window.erase = false;
    *erased = false;
    const std::optional<COLORREF> ground = window.Ground();
    if (erase && area.IsRectEmpty() == FALSE && ground.has_value()) {
        const CRect device = window.surface->scale().Device(area);
        window.surface->Fill(device, *ground, device);
        *erased = true;
    }
    return area;
}

void Rescale() {
    std::vector<HWND> changed;
    for (const HWND handle : All()) {
        Window* window = Find(handle);
        const NativeWidget::Extent extent = window->native->DeviceExtent();
        const Surface& surface = *window->surface;
        if (surface.width() == extent.width && surface.height() == extent.height &&
            surface.scale().factor == extent.factor)
            continue;
        ReplaceSurface(*window);
        Invalidate(*window, window->ClientRect(), true);
        changed.push_back(handle);
    }
    for (const HWND handle : changed) PaintNow(handle);
    for (const HWND handle : changed) Call(handle, WM_DPICHANGED_AFTERPARENT, 0, 0);
}

void SystemColorsChanged() {
    // Windows of the program's own classes have their own colours, and their pictures would be lost.
    for (const HWND handle : All())
        if (Window* window = Find(handle); window->kind != Window::Kind::kPlain)
            Invalidate(*window, window->ClientRect(), true);
}

void PaintAll() {
    if (std::exchange(g_unpainted, false))
        for (const HWND handle : All()) PaintNow(handle);
    if (!TakeDrawn()) return;
    NativeWidget* last = nullptr;
    CRect lastDamage;
    for (const HWND handle : All()) {
        Window* window = Find(handle);
        if (window == nullptr || !window->surfaceDrawn.exchange(false)) continue;
        const CRect damage = window->surface->TakeDamage();
        if (damage.IsRectEmpty() != FALSE) continue;
        if (last != nullptr) last->ShowSurface(lastDamage, false);
        last = window->native.get();
        lastDamage = damage;
    }
    // The rest goes to the screen with it, in one piece.
    if (last != nullptr) last->ShowSurface(lastDamage, true);
}

}  // namespace windows
