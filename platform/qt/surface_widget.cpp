// SPDX-License-Identifier: MIT
#include <fcntl.h>
#include <unistd.h>

#include <QBackingStore>
#include <QDragEnterEvent>
#include <QGuiApplication>
#include <QMimeData>
#include <QPaintEvent>
#include <QPainter>
#include <QTimer>
#include <QWindow>
#include <algorithm>
#include <utility>

#include "platform/framework/drop_files.h"
#include "platform/qt/file_uri.h"
#include "platform/qt/qt_toolkit.h"
#include "platform/qt/widgets.h"

namespace {

constexpr std::uint32_t opaque = 0xFF000000U;

// Whether other processes may see the memory at this address: bit 61 of its page's entry, which is there once
// the page was read (Linux, pagemap in proc(5)).
bool IsShared(const uchar* address) {
    [[maybe_unused]] const uchar first = *static_cast<const volatile uchar*>(address);
    const int table = open("/proc/self/pagemap", O_RDONLY | O_CLOEXEC);
    if (table < 0) return false;
    std::uint64_t entry = 0;
    const auto page = reinterpret_cast<std::uintptr_t>(address) / static_cast<std::uintptr_t>(getpagesize());
    const bool got =
        pread(table, &entry, sizeof entry, static_cast<off_t>(page * sizeof entry)) == sizeof entry;
    close(table);
    return got && (entry >> 61U & 1U) != 0;
}

// Whether the picture has the size that the window has on the screen now.
bool Fits(const Surface& surface, HWND window) {
    const NativeWidget::Extent extent = windows::Find(window)->native->DeviceExtent();
    return extent.width == surface.width() && extent.height == surface.height();
}

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

// The toolkit keeps the pixels of a top-level window in memory that the X server reads when it is told to.
// Before it draws where it has drawn already it waits until the server has read that, which takes three
// changes of thread. What is drawn here the server is always told to read after it was written: should it
// still be reading what was there, it comes by again.
bool SurfaceWidget::CopyToScreen(const QRect& area) {
    const QWidget* const top = window();
    QBackingStore* const store = top->backingStore();
    QWindow* const native = top->windowHandle();
    if (store == nullptr || native == nullptr || !native->isExposed() || store->size() != top->size())
        return false;
    if (visibleRegion() != QRegion(rect())) return false;
    QPaintDevice* const device = store->paintDevice();
    if (device == nullptr || device->devType() != QInternal::Image) return false;
    auto& pixels = *static_cast<QImage*>(device);
    const std::shared_ptr<Surface> surface = windows::SurfaceOf(WindowHandle());
    if (surface == nullptr || !Fits(*surface, WindowHandle()) || !IsReadByServer(pixels)) return false;
    const double ratio = devicePixelRatioF();
    const QPoint corner = mapTo(top, QPoint(0, 0));
    const QRect to = area.translated(qRound(corner.x() * ratio), qRound(corner.y() * ratio));
    if (!pixels.rect().contains(to)) return false;
    {
        const std::scoped_lock lock(surface->mutex());
        if (surface->plain().has_value()) return false;
        for (int y = 0; y < area.height(); ++y) {
            const std::uint32_t* from =
                surface->pixels() + std::ptrdiff_t{area.y() + y} * surface->width() + area.x();
            std::transform(from, from + area.width(),
                           reinterpret_cast<std::uint32_t*>(pixels.scanLine(to.y() + y)) + to.x(),
                           [](std::uint32_t pixel) { return pixel | opaque; });
        }
    }
    // Uneven ratios share pixels at the borders.
    const QRectF shown(to.x() / ratio, to.y() / ratio, to.width() / ratio, to.height() / ratio);
    store->flush(shown.toAlignedRect(), native);
    return true;
}

// Without such memory, as on another machine's display, the toolkit sends what it was told of before it was
// drawn.
bool SurfaceWidget::IsReadByServer(const QImage& pixels) {
    static const bool isX = QGuiApplication::platformName() == QStringLiteral("xcb");
    const QImage::Format format = pixels.format();
    if (!isX || (format != QImage::Format_RGB32 && format != QImage::Format_ARGB32_Premultiplied))
        return false;
    if (std::exchange(m_looked, pixels.constBits()) != pixels.constBits()) m_shared = IsShared(m_looked);
    return m_shared;
}

void PaintSurface(QWidget* widget, HWND window, const QRect& area) {
    const std::shared_ptr<Surface> surface = windows::SurfaceOf(window);
    if (surface == nullptr) return;
    if (!Fits(*surface, window)) QtToolkit::Instance().ScaleChanged();
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
