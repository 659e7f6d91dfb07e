#include <QPaintEvent>
#include <QStyle>
#include <QStyleOptionButton>
#include <QStylePainter>

#include "platform/framework/message_queue.h"
#include "platform/qt/widgets.h"

namespace {

void TellParent(HWND window, UINT code) {
    const Window* record = windows::Find(window);
    if (record == nullptr || record->parent == nullptr) return;
    windows::Call(record->parent->handle, WM_COMMAND, LOWORD(record->id) | static_cast<WPARAM>(code) << 16U,
                  reinterpret_cast<LPARAM>(window));
}

}  // namespace

ButtonWidget::ButtonWidget(HWND window, QWidget* parent, bool isDefault)
    : WindowWidget<QAbstractButton>(window, parent), m_default(isDefault) {
    connect(this, &QAbstractButton::clicked, [window] { TellParent(window, BN_CLICKED); });
    connect(this, &QAbstractButton::pressed, [this] { StateChanged(); });
    connect(this, &QAbstractButton::released, [this] { StateChanged(); });
}

void ButtonWidget::StateChanged() {
    if (Window* window = windows::Find(WindowHandle()))
        windows::Invalidate(*window, window->ClientRect(), true);
}

void ButtonWidget::changeEvent(QEvent* event) {
    WindowWidget<QAbstractButton>::changeEvent(event);
    if (event->type() == QEvent::EnabledChange) StateChanged();
}

void ButtonWidget::paintEvent(QPaintEvent* event) {
    if (m_ownerDrawn) {
        PaintSurface(this, WindowHandle(), event->rect());
        // Keyboard users need to see where they are; the player's drawing has no look for it.
        if (hasFocus()) {
            QStyleOptionFocusRect option;
            option.initFrom(this);
            option.rect = rect().adjusted(2, 2, -2, -2);
            QStylePainter(this).drawPrimitive(QStyle::PE_FrameFocusRect, option);
        }
        return;
    }
    QStyleOptionButton option;
    option.initFrom(this);
    option.text = text();
    option.features = m_default ? QStyleOptionButton::DefaultButton : QStyleOptionButton::None;
    option.state |= isDown() ? QStyle::State_Sunken : QStyle::State_Raised;
    QStylePainter(this).drawControl(QStyle::CE_PushButton, option);
}

CheckBoxWidget::CheckBoxWidget(HWND window, QWidget* parent) : WindowWidget<QCheckBox>(window, parent) {
    connect(this, &QAbstractButton::clicked, [window] { TellParent(window, BN_CLICKED); });
}

SliderWidget::SliderWidget(HWND window, QWidget* parent)
    : WindowWidget<QSlider>(window, Qt::Vertical, parent) {
    // The minimum is at the top, and "up" goes towards it.
    setInvertedAppearance(true);
    setInvertedControls(true);
    setTickPosition(QSlider::TicksBothSides);
    connect(this, &QSlider::valueChanged, [this](int position) { Tell(position); });
}

void SliderWidget::RangeChanged() {
    const int range = maximum() - minimum();
    setSingleStep(std::max(range / 50, 1));
    setPageStep(std::max(range / 5, 1));
    setTickInterval(std::max(range / 10, 1));
}

void SliderWidget::Tell(int position) {
    const Window* record = windows::Find(WindowHandle());
    if (record == nullptr || record->parent == nullptr) return;
    const UINT code = isSliderDown() ? TB_THUMBTRACK : TB_THUMBPOSITION;
    windows::Call(record->parent->handle, WM_VSCROLL,
                  code | static_cast<WPARAM>(LOWORD(static_cast<DWORD_PTR>(position))) << 16U,
                  reinterpret_cast<LPARAM>(WindowHandle()));
}
