// SPDX-License-Identifier: MIT
#include "platform/qt/accessible.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QApplication>
#include <algorithm>
#include <typeinfo>

#include "platform/framework/accessible_value.h"
#include "platform/framework/afxwin.h"
#include "platform/framework/window.h"
#include "platform/qt/qt_toolkit.h"
#include "platform/qt/toolkit.h"
#include "platform/qt/widgets.h"

namespace {

AccessibleValue* ValueOf(const Window* window) {
    return window == nullptr || window->object == nullptr ? nullptr : window->object->GetAccessibleValue();
}

// What a widget is; NoRole for one that only holds others.
QAccessible::Role RoleOf(const QWidget* widget) {
    if (widget->isWindow())
        return widget->parentWidget() == nullptr ? QAccessible::Window : QAccessible::Dialog;
    if (dynamic_cast<const CheckBoxWidget*>(widget) != nullptr) return QAccessible::CheckBox;
    if (dynamic_cast<const ButtonWidget*>(widget) != nullptr) return QAccessible::Button;
    if (dynamic_cast<const SliderWidget*>(widget) != nullptr) return QAccessible::Slider;
    const Window* window =
        dynamic_cast<const SurfaceWidget*>(widget) == nullptr ? nullptr : windows::Find(HandleOf(widget));
    if (window == nullptr || window->kind == Window::Kind::kDialog) return QAccessible::NoRole;
    if (ValueOf(window) != nullptr) return QAccessible::Slider;
    const DWORD type = window->StaticType();
    const bool picture =
        window->kind == Window::Kind::kPlain || type == SS_ICON || type == SS_BITMAP || window->text.empty();
    if (picture && !widget->accessibleName().isEmpty()) return QAccessible::Graphic;
    const bool text = window->kind == Window::Kind::kStatic && type <= SS_RIGHT && window->children.empty();
    return text ? QAccessible::StaticText : QAccessible::NoRole;
}

bool OnlyHolds(const QWidget* widget) {
    if (dynamic_cast<const EdgeWidget*>(widget) != nullptr || typeid(*widget) == typeid(QWidget)) return true;
    return dynamic_cast<const SurfaceWidget*>(widget) != nullptr && RoleOf(widget) == QAccessible::NoRole;
}

// The widgets inside, those inside of what only holds others in its place.
void Collect(const QWidget* widget, QList<QWidget*>& found) {
    for (QObject* object : widget->children()) {
        auto* child = qobject_cast<QWidget*>(object);
        if (child == nullptr || child->isWindow()) continue;
        if (OnlyHolds(child))
            Collect(child, found);
        else
            found.append(child);
    }
}

class AccessibleWidget : public QAccessibleWidget, public QAccessibleValueInterface {
public:
    explicit AccessibleWidget(QWidget* widget) : QAccessibleWidget(widget) {}

    void* interface_cast(QAccessible::InterfaceType type) override {
        if (type == QAccessible::ValueInterface && role() == QAccessible::Slider)
            return static_cast<QAccessibleValueInterface*>(this);
        return QAccessibleWidget::interface_cast(type);
    }

    QAccessible::Role role() const override { return RoleOf(widget()); }
    QAccessible::State state() const override {
        QAccessible::State state = QAccessibleWidget::state();
        if (const auto* button = qobject_cast<const QAbstractButton*>(widget())) {
            state.checkable = button->isCheckable();
            state.checked = button->isChecked();
            state.pressed = button->isDown();
        }
        return state;
    }
    QString text(QAccessible::Text which) const override {
        if (which == QAccessible::Name && widget()->accessibleName().isEmpty())
            if (const auto* button = qobject_cast<const QAbstractButton*>(widget())) return button->text();
        const bool value = which == QAccessible::Value || which == QAccessible::Description;
        if (value && role() == QAccessible::Slider) return ValueText();
        return QAccessibleWidget::text(which);
    }

    int childCount() const override { return static_cast<int>(Children().size()); }
    QAccessibleInterface* child(int index) const override {
        return QAccessible::queryAccessibleInterface(Children().value(index));
    }
    int indexOfChild(const QAccessibleInterface* child) const override {
        return static_cast<int>(Children().indexOf(qobject_cast<QWidget*>(child->object())));
    }
    QAccessibleInterface* parent() const override {
        if (widget()->isWindow()) return QAccessibleWidget::parent();
        QWidget* outer = widget()->parentWidget();
        while (!outer->isWindow() && OnlyHolds(outer)) outer = outer->parentWidget();
        return QAccessible::queryAccessibleInterface(outer);
    }

    // A text is named by the caption before it.
    QList<QPair<QAccessibleInterface*, QAccessible::Relation>> relations(
        QAccessible::Relation match) const override {
        auto all = QAccessibleWidget::relations(match);
        const Window* window = windows::Find(HandleOf(widget()));
        if (role() != QAccessible::StaticText || window->parent == nullptr) return all;
        const auto& siblings = window->parent->children;
        const auto self = std::find(siblings.begin(), siblings.end(), window);
        if (self == siblings.begin() || self == siblings.end()) return all;
        const Window* before = *std::prev(self);
        if (before->kind == Window::Kind::kStatic && before->text.ends_with(':') &&
            (match & QAccessible::Label) != 0)
            all.append({QAccessible::queryAccessibleInterface(WidgetOf(before->handle)), QAccessible::Label});
        return all;
    }

    QStringList actionNames() const override {
        QStringList names = QAccessibleWidget::actionNames();
        if (qobject_cast<const QAbstractButton*>(widget()) != nullptr && widget()->isEnabled())
            names.prepend(role() == QAccessible::CheckBox ? toggleAction() : pressAction());
        return names;
    }
    void doAction(const QString& name) override {
        auto* button = qobject_cast<QAbstractButton*>(widget());
        // After the answer: what is clicked may bring up a dialog, and whoever asked would wait for its end.
        if (button != nullptr && (name == pressAction() || name == toggleAction()))
            QMetaObject::invokeMethod(button, &QAbstractButton::click, Qt::QueuedConnection);
        else
            QAccessibleWidget::doAction(name);
    }

    QVariant currentValue() const override {
        if (const auto* slider = Slider()) return slider->value();
        const AccessibleValue* value = Value();
        return value == nullptr ? 0.0 : value->Value();
    }
    void setCurrentValue(const QVariant& wanted) override {
        if (auto* slider = Slider()) slider->setValue(wanted.toInt());
        if (AccessibleValue* value = Value()) value->SetValue(wanted.toDouble());
    }
    QVariant maximumValue() const override {
        if (const auto* slider = Slider()) return slider->maximum();
        const AccessibleValue* value = Value();
        return value == nullptr ? 0.0 : value->MaximumValue();
    }
    QVariant minimumValue() const override { return Slider() == nullptr ? 0 : Slider()->minimum(); }
    QVariant minimumStepSize() const override { return Slider() == nullptr ? 1 : Slider()->singleStep(); }

private:
    QList<QWidget*> Children() const {
        QList<QWidget*> found;
        Collect(widget(), found);
        return found;
    }
    QSlider* Slider() const { return qobject_cast<QSlider*>(widget()); }
    AccessibleValue* Value() const { return ValueOf(windows::Find(HandleOf(widget()))); }
    QString ValueText() const {
        if (const AccessibleValue* value = Value()) return QString::fromStdString(value->ValueText().Str());
        const QSlider* slider = Slider();
        if (slider == nullptr || slider->maximum() <= slider->minimum()) return {};
        const qint64 range = qint64{slider->maximum()} - slider->minimum();
        return QStringLiteral("%1 %").arg(((qint64{slider->value()} - slider->minimum()) * 100 + range / 2) /
                                          range);
    }
};

class AccessibleProgram : public QAccessibleApplication {
public:
    QString text(QAccessible::Text which) const override {
        if (which == QAccessible::Name && AfxGetApp() != nullptr && !AfxGetApp()->m_strAppName.IsEmpty())
            return QString::fromStdString(AfxGetApp()->m_strAppName.Str());
        return QAccessibleApplication::text(which);
    }
};

QAccessibleInterface* Describe(const QString&, QObject* object) {
    if (object == qApp) return new AccessibleProgram;
    auto* widget = qobject_cast<QWidget*>(object);
    // The toolkit's own dialogs and the menu bar describe themselves.
    if (widget == nullptr || dynamic_cast<TopLevelWidget*>(widget->window()) == nullptr) return nullptr;
    const bool ours =
        widget->isWindow() || OnlyHolds(widget) || dynamic_cast<DefaultInput*>(widget) != nullptr;
    return ours ? new AccessibleWidget(widget) : nullptr;
}

}  // namespace

void DescribeWindowsToAssistivePrograms() {
    QAccessible::installFactory(Describe);
}

void QtToolkit::AnnounceValue(HWND window) {
    const AccessibleValue* value = ValueOf(windows::Find(window));
    if (value == nullptr || !QAccessible::isActive()) return;
    QAccessibleValueChangeEvent event(WidgetOf(window), value->Value());
    QAccessible::updateAccessibility(&event);
}
