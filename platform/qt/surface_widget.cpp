// SPDX-License-Identifier: MIT
#include <QDragEnterEvent>
#include <QMimeData>
#include <QPaintEvent>
#include <QPainter>
#include <QTimer>
#include <QUrl>
#include <algorithm>
#include <cmath>
#include <utility>

#include "platform/framework/drop_files.h"
#include "platform/qt/widgets.h"

namespace {

// A program that is answered with a move would delete its file.
void AcceptCopy(QDropEvent* event) {
    event->setDropAction(Qt::CopyAction);
    event->accept();
}

}  // namespace

SurfaceWidget::SurfaceWidget(HWND window, QWidget* parent) : WindowWidget<QWidget>(window, parent) {
    setAttribute(Qt::WA_OpaquePaintEvent);
}

void SurfaceWidget::paintEvent(QPaintEvent* event) {
    PaintSurface(this, WindowHandle(), event->rect());
}

void PaintSurface(QWidget* widget, HWND window, const QRect& area) {
    const std::shared_ptr<Surface> surface = windows::SurfaceOf(window);
    if (surface == nullptr) return;
    QPainter painter(widget);
    const std::scoped_lock lock(surface->mutex());
    const QImage image(reinterpret_cast<const uchar*>(surface->pixels()), surface->width(), surface->height(),
                       QImage::Format_RGB32);
    const qreal scale = widget->devicePixelRatioF();
    if (scale == std::floor(scale)) {
        painter.drawImage(area.topLeft(), image, area);
        return;
    }
    // Pixels of uneven sizes would look ragged. The whole picture is given, as the pixels beside the area
    // count at its border.
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(0, 0, image);
}

void SurfaceWidget::dragEnterEvent(QDragEnterEvent* event) {
    dragMoveEvent(event);
}

void SurfaceWidget::dragMoveEvent(QDragMoveEvent* event) {
    const QList<QUrl> urls = event->mimeData()->urls();
    if (std::any_of(urls.begin(), urls.end(), [](const QUrl& url) { return url.isLocalFile(); }))
        AcceptCopy(event);
}

void SurfaceWidget::dropEvent(QDropEvent* event) {
    DroppedFiles dropped;
    for (const QUrl& url : event->mimeData()->urls())
        if (url.isLocalFile()) dropped.paths.push_back(url.toLocalFile().toStdString());
    AcceptCopy(event);
    // One that offers nothing but a move is answered that nothing was done.
    if (event->dropAction() != Qt::CopyAction) event->setDropAction(Qt::IgnoreAction);
    if (dropped.paths.empty()) return;
    // Delivered later, as the program that the files come from waits until this event has been handled, and
    // the player may show a message box.
    QTimer::singleShot(0, [window = WindowHandle(), dropped = std::move(dropped)] {
        windows::Call(window, WM_DROPFILES, reinterpret_cast<WPARAM>(&dropped), 0);
    });
}

EdgeWidget::EdgeWidget(QWidget* parent, bool border, int sunken)
    : QWidget(parent), m_border(border), m_sunken(sunken) {}

void EdgeWidget::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    QRect edge = rect();
    const auto ring = [&](const QColor& topLeft, const QColor& bottomRight) {
        painter.fillRect(edge.left(), edge.top(), edge.width(), 1, topLeft);
        painter.fillRect(edge.left(), edge.top(), 1, edge.height(), topLeft);
        painter.fillRect(edge.left(), edge.bottom(), edge.width(), 1, bottomRight);
        painter.fillRect(edge.right(), edge.top(), 1, edge.height(), bottomRight);
        edge.adjust(1, 1, -1, -1);
    };
    const QColor shadow = palette().color(QPalette::Dark);
    if (m_border) ring(shadow, shadow);
    for (int i = 0; i < m_sunken; ++i) ring(shadow, palette().color(QPalette::Light));
}
