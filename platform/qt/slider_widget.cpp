#include <QKeyEvent>

#include "platform/qt/widgets.h"

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

void SliderWidget::keyPressEvent(QKeyEvent* event) {
    // A trackbar takes left for up and right for down.
    if (event->key() == Qt::Key_Left)
        triggerAction(SliderSingleStepSub);
    else if (event->key() == Qt::Key_Right)
        triggerAction(SliderSingleStepAdd);
    else
        WindowWidget<QSlider>::keyPressEvent(event);
}

void SliderWidget::Tell(int position) {
    const Window* record = windows::Find(WindowHandle());
    if (record == nullptr || record->parent == nullptr) return;
    const UINT code = isSliderDown() ? TB_THUMBTRACK : TB_THUMBPOSITION;
    windows::Call(record->parent->handle, WM_VSCROLL,
                  code | static_cast<WPARAM>(LOWORD(static_cast<DWORD_PTR>(position))) << 16U,
                  reinterpret_cast<LPARAM>(WindowHandle()));
}
