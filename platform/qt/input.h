// SPDX-License-Identifier: MIT
// From the toolkit's events to the player's messages.
#pragma once

#include <QEvent>
#include <QPointer>
#include <QWidget>
#include <optional>
#include <utility>

#include "platform/framework/window.h"

// The message that an event of the window's widget stands for; nothing for events that the toolkit keeps.
std::optional<MSG> MessageFromEvent(HWND window, QEvent* event);
// Notifies a window of what the event itself does not say: its cursor when the pointer comes, and, while it
// has the capture, that the pointer has left it.
void NotifyPointerCrossing(HWND window, QEvent::Type type);
// Notifies a window in which the button was released that the pointer is still over it, as the framework does
// when the capture ends. Without that it would miss the pointer's leaving.
void NotifyPointerStays(const QWidget* widget, HWND window);

// The default processing of an input message, as the window procedure reaches it.
class DefaultInput {
public:
    virtual ~DefaultInput() = default;
    // Lets the toolkit's widget have the event that is being handled. Once per event.
    virtual void HandleCurrentEvent() = 0;
};

// Lets a toolkit widget stand for a window: input becomes messages, and only what the window procedure
// leaves to its default reaches the widget.
template <class Base>
class WindowWidget : public Base, public DefaultInput {
public:
    template <class... Arguments>
    explicit WindowWidget(HWND window, Arguments&&... arguments)
        : Base(std::forward<Arguments>(arguments)...), m_window(window) {
        this->setProperty("window", QVariant::fromValue(reinterpret_cast<quintptr>(window)));
        this->setMouseTracking(true);
    }

    void HandleCurrentEvent() override {
        if (QEvent* event = std::exchange(m_current, nullptr)) Base::event(event);
    }

protected:
    HWND WindowHandle() const { return m_window; }

    bool event(QEvent* event) override {
        const std::optional<MSG> message = MessageFromEvent(m_window, event);
        if (!message.has_value()) {
            const QPointer<QWidget> alive(this);
            const QEvent::Type type = event->type();
            const bool result = Base::event(event);
            if (alive != nullptr) NotifyPointerCrossing(m_window, type);
            return result;
        }
        const QPointer<QWidget> alive(this);
        QEvent* outer = std::exchange(m_current, event);
        const LRESULT result = windows::DeliverInput(*message);
        if (alive == nullptr) return true;
        // The wheel is the parent's when this window has not turned anything.
        if (message->message == WM_MOUSEWHEEL && m_current != nullptr) event->setAccepted(result != 0);
        m_current = outer;
        if (message->message == WM_LBUTTONUP) NotifyPointerStays(this, m_window);
        return true;
    }

private:
    HWND m_window;
    QEvent* m_current = nullptr;
};
