// SPDX-License-Identifier: MIT
#include <QPaintEvent>
#include <QStyle>
#include <QStyleOptionButton>
#include <QStylePainter>

#include "platform/framework/message_queue.h"
#include "platform/qt/widgets.h"

namespace {

void NotifyParent(HWND window, UINT code) {
    const Window* record = windows::Find(window);
    if (record == nullptr || record->parent == nullptr) return;
    windows::Call(record->parent->handle, WM_COMMAND, LOWORD(record->id) | static_cast<WPARAM>(code) << 16U,
                  reinterpret_cast<LPARAM>(window));
}

}  // namespace

ButtonWidget::ButtonWidget(HWND window, QWidget* parent, bool isDefault)
    : WindowWidget<QAbstractButton>(window, parent), m_default(isDefault) {
    connect(this, &QAbstractButton::clicked, [window] { NotifyParent(window, BN_CLICKED); });
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
    connect(this, &QAbstractButton::clicked, [window] { NotifyParent(window, BN_CLICKED); });
}
