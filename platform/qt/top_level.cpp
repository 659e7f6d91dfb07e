// SPDX-License-Identifier: MIT
#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QKeySequence>
#include <QTimer>

#include "platform/framework/message_queue.h"
#include "platform/framework/resources.h"
#include "platform/qt/native_widget.h"
#include "platform/qt/qt_toolkit.h"

namespace {

Qt::WindowFlags FlagsFor(const Window& window) {
    Qt::WindowFlags flags = window.owner == nullptr ? Qt::Window : Qt::Dialog;
    flags |= Qt::CustomizeWindowHint;
    if ((window.style & WS_CAPTION) == WS_CAPTION) flags |= Qt::WindowTitleHint;
    if ((window.style & WS_SYSMENU) != 0) flags |= Qt::WindowSystemMenuHint | Qt::WindowCloseButtonHint;
    if ((window.style & WS_MINIMIZEBOX) != 0) flags |= Qt::WindowMinimizeButtonHint;
    return flags;
}

void AddItems(QMenu* menu, const std::vector<resources::MenuItem>& items, HWND window) {
    for (const resources::MenuItem& item : items) {
        if (item.text.empty()) {
            menu->addSeparator();
            continue;
        }
        if (!item.children.empty()) {
            AddItems(menu->addMenu(QString::fromStdString(item.text)), item.children, window);
            continue;
        }
        QAction* action = menu->addAction(QString::fromStdString(item.text));
        action->setData(item.id);
        QObject::connect(action, &QAction::triggered,
                         [window, id = item.id] { windows::Call(window, WM_COMMAND, LOWORD(id), 0); });
    }
}

QAction* FindAction(const QList<QAction*>& actions, unsigned command) {
    for (QAction* action : actions) {
        if (action->menu<QMenu*>() != nullptr) {
            if (QAction* found = FindAction(action->menu<QMenu*>()->actions(), command)) return found;
        } else if (action->data().isValid() && action->data().toUInt() == command) {
            return action;
        }
    }
    return nullptr;
}

}  // namespace

TopLevelWidget::TopLevelWidget(const Window& window, QWidget* owner)
    : QWidget(owner, FlagsFor(window)), m_window(window.handle), m_holder(this) {
    if (window.menu != 0) BuildMenu(window.menu);
}

void TopLevelWidget::BuildMenu(unsigned menuId) {
    m_holder = new QWidget(this);
    m_menuBar = new QMenuBar(this);
    // The menu stays in the window, where its size is counted.
    m_menuBar->setNativeMenuBar(false);
    m_menuBar->setFont(QApplication::font());
    for (const resources::MenuItem& item : resources::LoadMenu(menuId))
        AddItems(m_menuBar->addMenu(QString::fromStdString(item.text)), item.children, m_window);
}

void TopLevelWidget::SetClientSize(const QSize& size) {
    m_clientSize = size;
    m_ratio = devicePixelRatioF();
    if (m_cover != nullptr) return;
    const int menuHeight = m_menuBar == nullptr ? 0 : m_menuBar->heightForWidth(size.width());
    if (m_menuBar != nullptr) {
        m_menuBar->setGeometry(0, 0, size.width(), menuHeight);
        m_holder->setGeometry(0, menuHeight, size.width(), size.height());
    }
    setFixedSize(size.width(), size.height() + menuHeight);
}

void TopLevelWidget::CoverWith(QtNativeWidget* alone) {
    m_cover = new QWidget(this);
    m_cover->setPalette(QPalette(Qt::black));
    m_cover->setAutoFillBackground(true);
    m_alone = alone;
    LiftLimits();
    LayOutCover();
    m_cover->show();
    showFullScreen();
}

void TopLevelWidget::Uncover() {
    m_cover->hide();
    m_cover->deleteLater();
    m_cover = nullptr;
    m_alone = nullptr;
    showNormal();
    SetClientSize(m_clientSize);
}

void TopLevelWidget::LayOutCover() {
    m_cover->setGeometry(rect());
    m_alone->FillCover(m_cover);
    QtToolkit::Instance().ScaleChanged();
}

void TopLevelWidget::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    if (m_cover != nullptr)
        LayOutCover();
    else if (devicePixelRatioF() != m_ratio)
        QTimer::singleShot(0, this, [this] { FollowScreen(); });
}

// An X server's window keeps its pixels on a screen of another scale, and its limits with them: setting the
// same ones again would change nothing.
void TopLevelWidget::FollowScreen() {
    if (m_cover == nullptr) LiftLimits();
    SetClientSize(m_clientSize);
}

void TopLevelWidget::LiftLimits() {
    setMinimumSize(0, 0);
    setMaximumSize(QWIDGETSIZE_MAX, QWIDGETSIZE_MAX);
}

void TopLevelWidget::SetShortcut(unsigned command, const QString& shortcuts) {
    QAction* action = m_menuBar == nullptr ? nullptr : FindAction(m_menuBar->actions(), command);
    if (action != nullptr)
        action->setShortcuts(QKeySequence::listFromString(shortcuts, QKeySequence::PortableText));
}

void TopLevelWidget::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange) windows::SystemColorsChanged();
}

void TopLevelWidget::closeEvent(QCloseEvent* event) {
    // The window closes when the player says so.
    event->ignore();
    windows::Call(m_window, WM_SYSCOMMAND, SC_CLOSE, 0);
}
