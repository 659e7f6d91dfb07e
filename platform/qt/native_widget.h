// SPDX-License-Identifier: MIT
// The toolkit's side of one window.
#pragma once

#include <QPointer>
#include <map>

#include "platform/framework/native.h"
#include "platform/qt/widgets.h"

class QTimer;

class QtNativeWidget : public NativeWidget {
public:
    explicit QtNativeWidget(Window& window);
    ~QtNativeWidget() override;

    void Place(const RECT& rect) override;
    void CenterOnScreen() override;
    void ShowFullScreen(bool full) override;
    void Show(int cmdShow) override;
    void Enable(bool enable) override;
    void SetText(const std::string& text) override;
    void SetAccessibleName(const std::string& name) override;
    void SetFocus() override;
    bool IsMinimized() const override;
    void SetCursor(const Image* cursor) override;
    void SetIcon(const std::vector<Image>& sizes) override;
    void AcceptDrops(bool accept) override;
    void SetShortcut(unsigned command, const std::string& shortcuts) override;
    Extent DeviceExtent() const override;
    void ShowSurface(const RECT& area, bool now) override;
    CPoint ToScreen(POINT client) const override;
    CPoint FromScreen(POINT screen) const override;
    void StartTimer(std::uintptr_t id, unsigned milliseconds) override;
    bool StopTimer(std::uintptr_t id) override;
    LRESULT ControlMessage(UINT message, WPARAM wParam, LPARAM lParam) override;
    UINT ItemState() const override;

    QWidget* Client() const { return m_client; }
    // Where a point of the widget's is in the window's logical units.
    QPoint ToLogical(const QPointF& point) const { return (point / Zoom()).toPoint(); }
    // While it is shown alone: lays it out in the middle of what covers the rest.
    void FillCover(QWidget* cover);

private:
    void CreateControl(Window& window, QWidget* parent);
    LRESULT SliderMessage(UINT message, LPARAM lParam);
    // The toolkit's units per logical one.
    double Zoom() const;
    TopLevelWidget* Top() const;
    void LeaveCover();

    HWND m_window;
    QPointer<QWidget> m_home;  // the parent to go back to, while the window is shown alone
    double m_aloneZoom = 0.0;  // 0: not alone
    // All three are null once the toolkit has deleted them with their parent.
    QPointer<QWidget> m_outer;  // the whole window: top-level frame, edge, or the client itself
    QPointer<QWidget> m_client;
    DefaultInput* m_input = nullptr;  // the client's; valid as long as it
    TopLevelWidget* m_top = nullptr;
    ButtonWidget* m_button = nullptr;
    CheckBoxWidget* m_checkBox = nullptr;
    SliderWidget* m_slider = nullptr;
    SurfaceWidget* m_surface = nullptr;
    std::map<std::uintptr_t, QTimer*> m_timers;
};
