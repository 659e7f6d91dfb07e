// SPDX-License-Identifier: MIT
// The layer's own record of a window, and the table that finds it by its handle.
//
// The records belong to the UI thread. Other threads may ask the table whether a handle lives and for its
// picture; both answers are taken under the table's lock.
#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "platform/framework/afxtypes.h"
#include "platform/framework/image.h"
#include "platform/framework/native.h"
#include "platform/framework/surface.h"
#include "platform/framework/winuser.h"

class CWnd;

struct Window {
    enum class Kind { kPlain, kDialog, kStatic, kButton, kTrackbar };

    bool IsTopLevel() const { return parent == nullptr; }
    DWORD StaticType() const { return style & SS_TYPEMASK; }
    DWORD ButtonType() const { return style & BS_TYPEMASK; }
    // Whether the window is painted through messages onto its surface, and not by a toolkit's control.
    bool PaintsSurface() const {
        return kind != Kind::kTrackbar && (kind != Kind::kButton || ButtonType() == BS_OWNERDRAW);
    }
    CRect ClientRect() const {
        return CRect(0, 0, std::max(rect.Width() - 2 * border, 0), std::max(rect.Height() - 2 * border, 0));
    }
    // What erasing fills with, as the desktop's colours are now; nothing for windows that do not erase.
    std::optional<COLORREF> Ground() const;
    // The window and all its ancestors are shown.
    bool IsShown() const;

    HWND handle = nullptr;
    Kind kind = Kind::kPlain;
    DWORD style = 0;
    DWORD exStyle = 0;
    UINT id = 0;
    unsigned menu = 0;  // resource id of a top-level window's menu, 0 for none
    Window* parent = nullptr;
    HWND owner = nullptr;  // of a top-level window
    std::vector<Window*> children;
    CRect rect;  // outer, in the parent's client coordinates; a top-level window's is its client area at 0, 0
    int border = 0;  // pixels on each side that the styles take from the client area
    std::string text;
    std::optional<Image> picture;        // SS_ICON, SS_BITMAP, in logical pixels
    unsigned pictureId = 0;              // its resource
    std::optional<COLORREF> background;  // what erasing fills with, of a class of the program's own
    bool hasFace = false;                // erases with the desktop's face colour instead
    bool redrawOnResize = false;
    CWnd* object = nullptr;  // who handles the messages
    bool visible = false;    // its own flag
    bool enabled = true;
    bool destroying = false;

    CRect invalid;  // part of the client area that waits for WM_PAINT
    bool erase = false;
    std::shared_ptr<Surface> surface;       // client area; replaced under the table's lock
    std::atomic<bool> surfaceDrawn{false};  // drawn on since the toolkit last showed it
    std::unique_ptr<NativeWidget> native;
};

namespace windows {

// Adds a record and sets its handle.
Window& Add(std::unique_ptr<Window> window);
// Takes the record out of the table; its handle names nothing from here on.
std::shared_ptr<Window> Remove(HWND handle);
// Null for a handle that names no window. UI thread.
Window* Find(HWND handle);
// Every window, in the order of their creation. UI thread.
std::vector<HWND> All();
// Any thread.
bool Lives(HWND handle);
// Keeps the window from being destroyed while the result lives; false when the handle names none. Any thread,
// for an instant: the UI thread creates and destroys no window meanwhile.
std::unique_lock<std::mutex> Keep(HWND handle);
// The window's picture, null when there is no such window. Any thread.
std::shared_ptr<Surface> SurfaceOf(HWND handle);
// Creates a new picture for the window, in the size that it has on the screen now.
void ReplaceSurface(Window& window);
// The screen's scale or the size of the contents may have changed: windows whose pictures no longer fit get
// new ones, are painted, and notified by WM_DPICHANGED_AFTERPARENT. UI thread.
void Rescale();
// Notes that the window's picture was drawn on, and has the toolkit show it soon. Any thread.
void SurfaceDrawn(HWND handle);
// Whether that was so for any window since the last call. UI thread.
bool TakeDrawn();

// Creation shared by CWnd and the dialogs: creates the picture and the native widget and notifies the object
// (WM_CREATE, WM_SIZE). The window stays hidden.
Window& Create(std::unique_ptr<Window> window, CWnd* object);
void Destroy(HWND handle);

// The desktop's colours have changed: paints again what is drawn in them. UI thread.
void SystemColorsChanged();

// Calls the window procedure. UI thread.
LRESULT Call(HWND handle, UINT message, WPARAM wParam, LPARAM lParam);
// What the window's class does with a message. UI thread.
LRESULT CallDefault(HWND handle, UINT message, WPARAM wParam, LPARAM lParam);
// Sends an input message on its way: the application's PreTranslateMessage first, then the window.
LRESULT DeliverInput(const MSG& message);

// Has the toolkit call PaintAll, which then looks at every window: something was invalidated, or is shown
// now.
void PaintSoon();
void Invalidate(Window& window, const RECT& area, bool erase);
// Paints one window now, if a part of it waits and it is shown.
void PaintNow(HWND handle);
// Paints every window that waits, then shows what was drawn. Called by the toolkit when no message waits.
void PaintAll();
// The area that a WM_PAINT handler has to paint, erased where asked for; counts as painted from here on.
CRect BeginPaint(Window& window, bool* erased);
// Default painting of STATIC controls.
void PaintStatic(Window& window);

// Pixels that the border styles take on each side.
int BorderWidth(Window::Kind kind, DWORD style, DWORD exStyle);

}  // namespace windows

// Takes posted messages out and delivers them, at most those that wait now. UI thread; called by the toolkit
// after Wake.
void DispatchPostedMessages();
