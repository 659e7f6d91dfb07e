// SPDX-License-Identifier: MIT
#include "tests/support/headless_toolkit.h"

#include "platform/framework/afxwin.h"
#include "platform/framework/window.h"
#include "res/player_resources.h"
#include "tests/support/watch.h"

class HeadlessToolkit::Widget : public NativeWidget {
public:
    Widget(HeadlessToolkit& toolkit, Window& window) : m_toolkit(toolkit), m_window(window) {}
    ~Widget() override {
        std::erase_if(m_toolkit.m_timers, [this](const Timer& t) { return t.window == m_window.handle; });
    }

    void Place(const RECT&) override {}
    void CenterOnScreen() override {}
    void ShowFullScreen(bool) override {}
    void Show(int) override {}
    void Enable(bool) override {}
    void SetText(const std::string&) override {}
    void SetAccessibleName(const std::string&) override {}
    void SetFocus() override {}
    bool IsMinimized() const override { return false; }
    void SetCursor(const Image*) override {}
    void SetIcon(const std::vector<Image>&) override {}
    void AcceptDrops(bool) override {}
    void SetShortcut(unsigned, const std::string&) override {}
    void ShowSurface(const RECT&, bool) override {}
    Extent DeviceExtent() const override {
        const CRect client = m_window.ClientRect();
        const CPoint size =
            SurfaceScale{m_toolkit.scale, m_toolkit.scale, 1.0}.Device(client.right, client.bottom);
        return {size.x, size.y, m_toolkit.scale};
    }
    CPoint ToScreen(POINT client) const override { return client; }
    CPoint FromScreen(POINT screen) const override { return screen; }
    void StartTimer(std::uintptr_t id, unsigned milliseconds) override {
        m_toolkit.m_timers.erase({m_window.handle, id, 0});
        m_toolkit.m_timers.insert({m_window.handle, id, milliseconds});
    }
    bool StopTimer(std::uintptr_t id) override {
        return m_toolkit.m_timers.erase({m_window.handle, id, 0}) != 0;
    }
    LRESULT ControlMessage(UINT, WPARAM, LPARAM) override { return 0; }
    UINT ItemState() const override { return 0; }

private:
    HeadlessToolkit& m_toolkit;
    Window& m_window;
};

HeadlessToolkit::HeadlessToolkit() {
    SetToolkit(this);
    UsePlayerResources();
}

HeadlessToolkit::~HeadlessToolkit() {
    SetToolkit(nullptr);
}

void HeadlessToolkit::Pump() {
    DispatchPostedMessages();
    windows::PaintAll();
}

bool HeadlessToolkit::PumpUntil(const std::function<bool()>& condition, int timeoutMs) {
    const auto pumped = [&] {
        Pump();
        return condition();
    };
    return watch::Eventually(pumped, std::chrono::milliseconds(timeoutMs));
}

void HeadlessToolkit::PumpFor(int milliseconds) {
    PumpUntil([] { return false; }, milliseconds);
}

void HeadlessToolkit::FireTimers() {
    const std::set<Timer> timers = m_timers;
    for (const Timer& timer : timers) {
        if (m_timers.contains(timer)) ::SendMessage(timer.window, WM_TIMER, timer.id, 0);
    }
}

std::unique_ptr<NativeWidget> HeadlessToolkit::CreateNativeWidget(Window& window) {
    return std::make_unique<Widget>(*this, window);
}

void HeadlessToolkit::MessageBox(HWND owner, const std::string& text, const std::string& caption,
                                 bool error) {
    boxes.push_back({owner, text, caption, error});
    if (duringBox) duringBox();
}
