// SPDX-License-Identifier: MIT
#include <QDragEnterEvent>
#include <QMimeData>
#include <QPaintEvent>
#include <QPainter>
#include <QTimer>
#include <utility>

#include "platform/framework/drop_files.h"
#include "platform/qt/file_uri.h"
#include "platform/qt/qt_toolkit.h"
#include "platform/qt/widgets.h"

namespace {

// Some weeks of messages; the rest of a drop is left.
constexpr std::size_t most_dropped = 10000;

// Not the toolkit's list of URLs: that loses names and takes all of a long list apart, at each move.
std::vector<std::string> DroppedPaths(const QDropEvent& event, std::size_t most) {
    return PathsOfUriList(event.mimeData()->data(QStringLiteral("text/uri-list")), most);
}

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
    const NativeWidget::Extent extent = windows::Find(window)->native->DeviceExtent();
    if (extent.width != surface->width() || extent.height != surface->height())
        QtToolkit::Instance().ScaleChanged();
    QPainter painter(widget);
    UseDevicePixels(painter);
    const double ratio = widget->devicePixelRatioF();
    const QRect part = QRectF(area.x() * ratio, area.y() * ratio, area.width() * ratio, area.height() * ratio)
                           .toAlignedRect();
    const std::scoped_lock lock(surface->mutex());
    if (const auto plain = surface->plain()) {
        painter.fillRect(part, QColor(*plain));
        return;
    }
    const QImage image(reinterpret_cast<const uchar*>(surface->pixels()), surface->width(), surface->height(),
                       QImage::Format_RGB32);
    painter.drawImage(part.topLeft(), image, part);
}

QPointF UseDevicePixels(QPainter& painter) {
    const QTransform before = painter.deviceTransform();
    painter.setWorldTransform(QTransform::fromTranslate(qRound(before.dx()), qRound(before.dy())) *
                              before.inverted());
    return QPointF(before.dx() - qRound(before.dx()), before.dy() - qRound(before.dy()));
}

void SurfaceWidget::dragEnterEvent(QDragEnterEvent* event) {
    dragMoveEvent(event);
}

void SurfaceWidget::dragMoveEvent(QDragMoveEvent* event) {
    if (!DroppedPaths(*event, 1).empty()) AcceptCopy(event);
}

void SurfaceWidget::dropEvent(QDropEvent* event) {
    DroppedFiles dropped;
    dropped.paths = DroppedPaths(*event, most_dropped);
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

// The edges lie around the client widget, one device pixel each; what is left outside them on a dense screen
// has the ground's colour.
void EdgeWidget::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    const double ratio = devicePixelRatioF();
    const QPointF rest = UseDevicePixels(painter);
    const QRect client = childrenRect();
    QRect edge(QPoint(qRound(client.x() * ratio + rest.x()), qRound(client.y() * ratio + rest.y())),
               QPoint(qRound((client.x() + client.width()) * ratio + rest.x()) - 1,
                      qRound((client.y() + client.height()) * ratio + rest.y()) - 1));
    const auto ring = [&](const QColor& topLeft, const QColor& bottomRight) {
        edge.adjust(-1, -1, 1, 1);
        painter.fillRect(edge.left(), edge.top(), edge.width(), 1, topLeft);
        painter.fillRect(edge.left(), edge.top(), 1, edge.height(), topLeft);
        painter.fillRect(edge.left(), edge.bottom(), edge.width(), 1, bottomRight);
        painter.fillRect(edge.right(), edge.top(), 1, edge.height(), bottomRight);
    };
    const QColor shadow = palette().color(QPalette::Dark);
    for (int i = 0; i < m_sunken; ++i) ring(shadow, palette().color(QPalette::Light));
    if (m_border) ring(shadow, shadow);
}
