// SPDX-License-Identifier: MIT
// A toolkit without a screen, for tests of windows by their messages and pictures alone. It gives what the
// real one cannot: timers fire when a test says so; message boxes close at once and are remembered; there is
// no thread and no allocation but the player's to count; and the thread sanitizer knows all code that runs.
//
// Make one before the first window and destroy it after the last; the thread that does is the UI thread. The
// player's resources are in use from then on.
#pragma once

#include <functional>
#include <set>
#include <string>
#include <vector>

#include "platform/framework/native.h"

class HeadlessToolkit : public NativeToolkit {
public:
    struct Box {
        HWND owner;
        std::string text;
        std::string caption;
        bool error;
    };
    struct Timer {
        HWND window;
        UINT_PTR id;
        unsigned milliseconds;
        bool operator<(const Timer& other) const {
            return window != other.window ? window < other.window : id < other.id;
        }
    };

    HeadlessToolkit();
    ~HeadlessToolkit() override;

    // Delivers what is posted and paints what waits, once.
    static void Pump();
    // Pumps until the condition holds; false after so many milliseconds.
    static bool PumpUntil(const std::function<bool()>& condition, int timeoutMs = 10000);
    static void PumpFor(int milliseconds);

    // Delivers WM_TIMER of each timer that is set.
    void FireTimers();
    const std::set<Timer>& Timers() const { return m_timers; }

    std::vector<Box> boxes;
    double scale = 1.0;               // device pixels per logical pixel; windows::Rescale follows a change
    std::function<void()> duringBox;  // run while a box is up

    std::unique_ptr<NativeWidget> CreateNativeWidget(Window& window) override;
    void Wake() override {}
    void Run() override {}
    void Quit() override {}
    void RunModal(HWND) override {}
    void EndModal(HWND) override {}
    void MessageBox(HWND owner, const std::string& text, const std::string& caption, bool error) override;
    std::vector<std::string> ChooseFiles(HWND, const std::string&, const std::vector<std::string>&,
                                         const FileQuestion&) override {
        return {};
    }
    void SetAppId(const std::string&) override {}
    void SetContentScale(double wanted) override { scale = wanted; }
    bool SavePicture(const std::string&, const Image&) override { return false; }
    void CopyPicture(const Image&) override {}
    COLORREF SystemColor(int) override { return RGB(0xC0, 0xC0, 0xC0); }
    void DrawText(std::uint32_t*, int, int, const std::string&, const RECT&, DWORD, COLORREF,
                  double) override {}
    std::optional<Image> DecodePng(std::span<const std::uint8_t>) override { return std::nullopt; }
    Image ScaleImage(const Image& image, int, int) override { return image; }
    SIZE TextExtent(const std::string&) override { return SIZE{0, 0}; }
    HWND ActiveWindow() override { return nullptr; }
    HWND FocusWindow() override { return nullptr; }
    HWND WindowAt(POINT) override { return nullptr; }
    bool IsKeyHeld(WPARAM) override { return false; }
    void OfferTip(HWND, const std::string&, TipDelays) override {}
    void HideTip() override {}
    void AnnounceValue(HWND) override {}

private:
    class Widget;
    std::set<Timer> m_timers;
};
