// SPDX-License-Identifier: MIT
#include <QKeyEvent>

#include "platform/qt/widgets.h"

SliderWidget::SliderWidget(HWND window, QWidget* parent)
    : WindowWidget<QSlider>(window, Qt::Vertical, parent) {
    setTickPosition(QSlider::TicksBothSides);
    connect(this, &QSlider::valueChanged, [this] { Notify(Position()); });
}

int SliderWidget::Position() const {
    return minimum() + maximum() - value();
}

void SliderWidget::SetPosition(int position) {
    setValue(minimum() + maximum() - position);
}

void SliderWidget::SetPositionRange(int lowest, int highest) {
    const int position = Position();
    setRange(lowest, std::max(lowest, highest));
    SetPosition(position);
    RangeChanged();
}

void SliderWidget::RangeChanged() {
    const int range = maximum() - minimum();
    setSingleStep(std::max(range / 50, 1));
    setPageStep(std::max(range / 5, 1));
    setTickInterval(std::max(range / 10, 1));
}

void SliderWidget::keyPressEvent(QKeyEvent* event) {
    // A trackbar takes left for up and right for down, and its beginning is the top.
    switch (event->key()) {
        case Qt::Key_Left:
            triggerAction(SliderSingleStepAdd);
            break;
        case Qt::Key_Right:
            triggerAction(SliderSingleStepSub);
            break;
        case Qt::Key_Home:
            triggerAction(SliderToMaximum);
            break;
        case Qt::Key_End:
            triggerAction(SliderToMinimum);
            break;
        default:
            WindowWidget<QSlider>::keyPressEvent(event);
    }
}

void SliderWidget::Notify(int position) {
    const Window* record = windows::Find(WindowHandle());
    if (record == nullptr || record->parent == nullptr) return;
    const UINT code = isSliderDown() ? TB_THUMBTRACK : TB_THUMBPOSITION;
    windows::Call(record->parent->handle, WM_VSCROLL,
                  code | static_cast<WPARAM>(LOWORD(static_cast<DWORD_PTR>(position))) << 16U,
                  reinterpret_cast<LPARAM>(WindowHandle()));
}
