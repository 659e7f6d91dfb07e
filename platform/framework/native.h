// SPDX-License-Identifier: MIT
// What the layer asks of the toolkit that shows its windows. platform/qt implements it; nothing else sees it.
//
// All calls come on the UI thread, but for Wake.
#pragma once

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "platform/framework/afxtypes.h"
#include "platform/framework/image.h"

struct Window;

// The toolkit's side of one window.
class NativeWidget {
public:
    virtual ~NativeWidget() = default;

    // The outer rectangle in the parent's client coordinates; of a top-level window only the size counts.
    virtual void Place(const RECT& rect) = 0;
    virtual void CenterOnScreen() = 0;
    // Shows a child alone on the whole screen, as large as it fits and black around it, or in its place
    // again.
    virtual void ShowFullScreen(bool full) = 0;
    // cmdShow: SW_…
    virtual void Show(int cmdShow) = 0;
    virtual void Enable(bool enable) = 0;
    virtual void SetText(const std::string& text) = 0;
    virtual void SetAccessibleName(const std::string& name) = 0;
    virtual void SetFocus() = 0;
    virtual bool IsMinimized() const = 0;
    // Null for the arrow.
    virtual void SetCursor(const Image* cursor) = 0;
    // One icon in several sizes.
    virtual void SetIcon(const std::vector<Image>& sizes) = 0;
    virtual void AcceptDrops(bool accept) = 0;
    virtual void SetShortcut(unsigned command, const std::string& shortcuts) = 0;
    // The client area as it is on the screen now, and how many device pixels a logical one has there.
    struct Extent {
        int width;
        int height;
        double factor;
    };
    virtual Extent DeviceExtent() const = 0;
    // Shows this part of the window's picture, in device pixels, and what still waits to be shown beside it
    // in the same top-level window: at once, or when the event loop comes to it.
    virtual void ShowSurface(const RECT& area, bool now) = 0;
    // Where a point of the client area is on the screen, and back. The screen's units are the toolkit's.
    virtual CPoint ToScreen(POINT client) const = 0;
    virtual CPoint FromScreen(POINT screen) const = 0;
    virtual void StartTimer(std::uintptr_t id, unsigned milliseconds) = 0;
    virtual bool StopTimer(std::uintptr_t id) = 0;
    // Messages of the standard controls (BM_…, TBM_…), and the control's own reaction to an input message
    // that reached its default processing.
    virtual LRESULT ControlMessage(UINT message, WPARAM wParam, LPARAM lParam) = 0;
    // ODS_… of a button.
    virtual UINT ItemState() const = 0;
};

class NativeToolkit {
public:
    virtual ~NativeToolkit() = default;

    virtual std::unique_ptr<NativeWidget> CreateNativeWidget(Window& window) = 0;
    // Has the UI thread call DispatchPostedMessages and windows::PaintAll soon. Any thread; allocates
    // nothing.
    virtual void Wake() = 0;
    // Runs the message loop until Quit; returns at once when Quit was called before.
    virtual void Run() = 0;
    virtual void Quit() = 0;
    // Runs a loop of its own with the window shown modally, until it ends or is destroyed.
    virtual void RunModal(HWND window) = 0;
    virtual void EndModal(HWND window) = 0;

    // Returns when the box is closed, by the person or because its owner was destroyed.
    virtual void MessageBox(HWND owner, const std::string& text, const std::string& caption, bool error) = 0;
    // For saving, an existing file is asked about, and a name without ending gets the pattern's.
    struct FileQuestion {
        bool saving = false;
        bool several = false;  // may be chosen, for opening
        std::string folder;    // where to begin, empty for wherever
        std::string name;      // what is suggested for saving
    };
    // filters: description and pattern in turn. None when cancelled or when the owner was destroyed.
    virtual std::vector<std::string> ChooseFiles(HWND owner, const std::string& title,
                                                 const std::vector<std::string>& filters,
                                                 const FileQuestion& question) = 0;
    // Opaque pictures. As a PNG file, which appears when it is whole; false, with nothing changed, when it
    // cannot be written.
    virtual bool SavePicture(const std::string& path, const Image& image) = 0;
    virtual void CopyPicture(const Image& image) = 0;

    // The name of the program's desktop entry, without its extension.
    virtual void SetAppId(const std::string& id) = 0;
    // How much larger than on the screen's own scale the contents of windows are. Windows follow when they
    // are placed next.
    virtual void SetContentScale(double scale) = 0;
    virtual COLORREF SystemColor(int index) = 0;
    // Draws one line of text, scale times as large, over width x height pixels; see CDC::DrawText. The
    // rectangle is in device pixels.
    virtual void DrawText(std::uint32_t* pixels, int width, int height, const std::string& text,
                          const RECT& rect, DWORD format, COLORREF color, double scale) = 0;
    // A PNG file; nothing when it is none.
    virtual std::optional<Image> DecodePng(std::span<const std::uint8_t> file) = 0;
    // Smoothly.
    virtual Image ScaleImage(const Image& image, int width, int height) = 0;
    // Size of one line of text in the dialogs' face, in logical units.
    virtual SIZE TextExtent(const std::string& text) = 0;

    virtual HWND ActiveWindow() = 0;
    virtual HWND FocusWindow() = 0;
    virtual HWND WindowAt(POINT screen) = 0;
    // VK_SHIFT or VK_CONTROL.
    virtual bool IsKeyHeld(WPARAM key) = 0;

    // The pointer moved over a window that has a tip: shows it after the delay, or shows the new text of one
    // that has been shown since the pointer came.
    struct TipDelays {
        int initialMs;
        int reshowMs;  // in place of initialMs when another tip was up a moment ago
        int autoPopMs;
    };
    virtual void OfferTip(HWND window, const std::string& text, TipDelays delays) = 0;
    // Hides the tip, and offers none until the pointer has left the window.
    virtual void HideTip() = 0;
    // Assistive programs are told that the window's value has changed.
    virtual void AnnounceValue(HWND window) = 0;
};

// The toolkit in use. Set once, before any window is created; null again at the very end.
NativeToolkit* Toolkit();
void SetToolkit(NativeToolkit* toolkit);
