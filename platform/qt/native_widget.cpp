// SPDX-License-Identifier: MIT
#include "platform/qt/native_widget.h"

#include <QBitmap>
#include <QCursor>
#include <QGuiApplication>
#include <QIcon>
#include <QScreen>
#include <QTimer>
#include <algorithm>
#include <utility>

#include "platform/qt/qt_toolkit.h"
#include "platform/qt/toolkit.h"

namespace {

QtNativeWidget* NativeOf(HWND window) {
    const Window* record = windows::Find(window);
    return record == nullptr ? nullptr : static_cast<QtNativeWidget*>(record->native.get());
}

QRect ToQRect(const RECT& rect, double zoom) {
    return QRect(qRound(rect.left * zoom), qRound(rect.top * zoom), qRound((rect.right - rect.left) * zoom),
                 qRound((rect.bottom - rect.top) * zoom));
}

}  // namespace

QPoint ToLogical(HWND window, const QPointF& point) {
    const QtNativeWidget* native = NativeOf(window);
    return native == nullptr ? point.toPoint() : native->ToLogical(point);
}

QWidget* WidgetOf(HWND window) {
    const QtNativeWidget* native = NativeOf(window);
    return native == nullptr ? nullptr : native->Client();
}

HWND HandleOf(const QWidget* widget) {
    // A frame without a handle of its own stands for the client area in it.
    for (const QWidget* w = widget; w != nullptr; w = w->parentWidget()) {
        const QVariant handle = w->property("window");
        if (handle.isValid()) return reinterpret_cast<HWND>(handle.value<quintptr>());
        if (w->isWindow()) break;
    }
    return nullptr;
}

std::unique_ptr<NativeWidget> QtToolkit::CreateNativeWidget(Window& window) {
    return std::make_unique<QtNativeWidget>(window);
}

QtNativeWidget::QtNativeWidget(Window& window) : m_window(window.handle) {
    if (window.IsTopLevel()) {
        QWidget* owner = WidgetOf(window.owner);
        m_top = new TopLevelWidget(window, owner == nullptr ? nullptr : owner->window());
        m_top->setProperty("window", QVariant::fromValue(reinterpret_cast<quintptr>(m_window)));
        m_outer = m_top;
        CreateControl(window, m_top->ClientParent());
        m_client->show();
    } else {
        QWidget* parent = WidgetOf(window.parent->handle);
        if (window.border > 0) {
            const bool border = (window.style & WS_BORDER) != 0;
            auto* edge = new EdgeWidget(parent, border, window.border - (border ? 1 : 0));
            m_outer = edge;
            CreateControl(window, edge);
            m_client->show();
        } else {
            CreateControl(window, parent);
            m_outer = m_client;
            m_outer->hide();
        }
    }
    if (!window.enabled) Enable(false);
    SetText(window.text);
    Place(window.rect);
}

void QtNativeWidget::CreateControl(Window& window, QWidget* parent) {
    if (window.kind == Window::Kind::kTrackbar) {
        m_slider = new SliderWidget(m_window, parent);
        m_client = m_slider;
        m_input = m_slider;
    } else if (window.kind == Window::Kind::kButton && window.ButtonType() == BS_AUTOCHECKBOX) {
        m_checkBox = new CheckBoxWidget(m_window, parent);
        m_client = m_checkBox;
        m_input = m_checkBox;
    } else if (window.kind == Window::Kind::kButton) {
        m_button = new ButtonWidget(m_window, parent, window.ButtonType() == BS_DEFPUSHBUTTON);
        m_client = m_button;
        m_input = m_button;
    } else {
        m_surface = new SurfaceWidget(m_window, parent);
        m_client = m_surface;
        m_input = m_surface;
    }
    const bool tabStop = window.IsTopLevel() || (window.style & WS_TABSTOP) != 0;
    m_client->setFocusPolicy(!tabStop || window.IsTopLevel() ? Qt::NoFocus : Qt::StrongFocus);
}

QtNativeWidget::~QtNativeWidget() {
    for (const auto& [id, timer] : m_timers) timer->deleteLater();
    QtToolkit::Instance().WindowGone(m_window);
    if (m_outer == nullptr) return;
    if (m_home != nullptr) LeaveCover();
    m_outer->hide();
    // An event of the widget may be what brought us here.
    m_outer->deleteLater();
}

void QtNativeWidget::Place(const RECT& rect) {
    if (m_home != nullptr) return;
    if (m_top != nullptr) {
        m_client->setFont(QtToolkit::Instance().DialogFont(Zoom()));
        const QSize size = ToQRect(rect, Zoom()).size();
        m_top->SetClientSize(size);
        m_client->setGeometry(QRect(QPoint(0, 0), size));
        return;
    }
    m_outer->setGeometry(ToQRect(rect, Zoom()));
    if (m_outer == m_client) return;
    const int border = qRound(windows::Find(m_window)->border * Zoom());
    m_client->setGeometry(m_outer->rect().adjusted(border, border, -border, -border));
}

void QtNativeWidget::CenterOnScreen() {
    const QRect screen = m_outer->screen()->availableGeometry();
    m_outer->move(screen.center() - m_outer->rect().center());
}

double QtNativeWidget::Zoom() const {
    return m_aloneZoom > 0 ? m_aloneZoom : QtToolkit::Instance().ContentScale();
}

TopLevelWidget* QtNativeWidget::Top() const {
    return static_cast<TopLevelWidget*>(m_outer->window());
}

void QtNativeWidget::ShowFullScreen(bool full) {
    if (m_top != nullptr || full == (m_home != nullptr)) return;
    if (full) {
        m_home = m_outer->parentWidget();
        Top()->CoverWith(this);
        return;
    }
    LeaveCover();
    Place(windows::Find(m_window)->rect);
    m_outer->show();
}

void QtNativeWidget::LeaveCover() {
    TopLevelWidget* top = Top();
    m_outer->setParent(std::exchange(m_home, nullptr));
    m_aloneZoom = 0.0;
    top->Uncover();
}

void QtNativeWidget::FillCover(QWidget* cover) {
    const RECT& rect = windows::Find(m_window)->rect;
    const double width = std::max(rect.right - rect.left, 1);
    const double height = std::max(rect.bottom - rect.top, 1);
    m_aloneZoom = std::min(cover->width() / width, cover->height() / height);
    const QSize size(qRound(width * m_aloneZoom), qRound(height * m_aloneZoom));
    if (m_outer->parentWidget() != cover) m_outer->setParent(cover);
    m_outer->setGeometry(
        QRect(QPoint(cover->width() - size.width(), cover->height() - size.height()) / 2, size));
    m_outer->show();
}

void QtNativeWidget::Show(int cmdShow) {
    switch (cmdShow) {
        case SW_HIDE:
            m_outer->hide();
            break;
        case SW_MINIMIZE:
            m_outer->showMinimized();
            break;
        case SW_RESTORE:
            m_outer->showNormal();
            break;
        default:
            m_outer->show();
            if (m_top != nullptr) {
                m_outer->raise();
                m_outer->activateWindow();
            }
    }
}

void QtNativeWidget::Enable(bool enable) {
    m_outer->setEnabled(enable);
}

void QtNativeWidget::SetText(const std::string& text) {
    const QString string = QString::fromStdString(text);
    if (m_top != nullptr) m_top->setWindowTitle(string);
    if (m_button != nullptr) m_button->setText(string);
    if (m_checkBox != nullptr) m_checkBox->setText(string);
    // What a static shows is also what it is called.
    if (m_top == nullptr && m_button == nullptr && m_checkBox == nullptr) m_client->setAccessibleName(string);
}

void QtNativeWidget::SetAccessibleName(const std::string& name) {
    m_client->setAccessibleName(QString::fromStdString(name));
}

void QtNativeWidget::SetFocus() {
    m_client->setFocus(Qt::OtherFocusReason);
}

bool QtNativeWidget::IsMinimized() const {
    return m_outer->isMinimized();
}

void QtNativeWidget::SetCursor(const Image* cursor) {
    if (cursor == nullptr)
        m_client->unsetCursor();
    else
        m_client->setCursor(QCursor(QPixmap::fromImage(ToQImage(*cursor)), cursor->hotX, cursor->hotY));
}

void QtNativeWidget::SetIcon(const std::vector<Image>& sizes) {
    QIcon icon;
    for (const Image& image : sizes) icon.addPixmap(QPixmap::fromImage(ToQImage(image)));
    m_outer->setWindowIcon(icon);
}

void QtNativeWidget::AcceptDrops(bool accept) {
    m_client->setAcceptDrops(accept);
}

void QtNativeWidget::SetShortcut(unsigned command, const std::string& shortcuts) {
    if (m_top != nullptr) m_top->SetShortcut(command, QString::fromStdString(shortcuts));
}

// The toolkit rounds the two edges of a widget, each by itself.
NativeWidget::Extent QtNativeWidget::DeviceExtent() const {
    if (m_client == nullptr) return {0, 0, 1.0};
    const QPoint from = m_client->mapTo(m_client->window(), QPoint(0, 0));
    const QPoint to = from + QPoint(m_client->width(), m_client->height());
    const double ratio = m_client->devicePixelRatioF();
    return {qRound(to.x() * ratio) - qRound(from.x() * ratio),
            qRound(to.y() * ratio) - qRound(from.y() * ratio), ratio * Zoom()};
}

void QtNativeWidget::ShowSurface(const RECT& area, bool now) {
    if (m_surface != nullptr && m_surface->CopyToScreen(ToQRect(area, 1.0))) return;
    const double ratio = m_client->devicePixelRatioF();
    QRect shown = ToQRect(area, 1.0 / ratio);
    // Uneven ratios share pixels at the borders.
    if (ratio != 1.0) shown.adjust(-1, -1, 2, 2);
    if (now)
        m_client->repaint(shown);
    else
        m_client->update(shown);
}

CPoint QtNativeWidget::ToScreen(POINT client) const {
    const QPoint at = m_client->mapToGlobal((QPointF(client.x, client.y) * Zoom()).toPoint());
    return CPoint(at.x(), at.y());
}

CPoint QtNativeWidget::FromScreen(POINT screen) const {
    const QPoint at = ToLogical(m_client->mapFromGlobal(QPoint(screen.x, screen.y)));
    return CPoint(at.x(), at.y());
}

void QtNativeWidget::StartTimer(std::uintptr_t id, unsigned milliseconds) {
    QTimer*& timer = m_timers[id];
    if (timer == nullptr) {
        timer = new QTimer;
        QObject::connect(timer, &QTimer::timeout, [window = m_window, id] {
            windows::DeliverInput({window, WM_TIMER, id, 0});
        });
    }
    timer->start(static_cast<int>(milliseconds));
}

bool QtNativeWidget::StopTimer(std::uintptr_t id) {
    const auto found = m_timers.find(id);
    if (found == m_timers.end()) return false;
    found->second->stop();
    found->second->deleteLater();
    m_timers.erase(found);
    return true;
}

LRESULT QtNativeWidget::ControlMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_MOUSEMOVE:
        case WM_LBUTTONDOWN:
        case WM_LBUTTONUP:
        case WM_LBUTTONDBLCLK:
        case WM_MOUSEWHEEL:
        case WM_KEYDOWN:
        case WM_SETFOCUS:
        case WM_KILLFOCUS:
            if (m_client != nullptr) m_input->HandleCurrentEvent();
            return 0;
        case WM_SETCURSOR:
            SetCursor(nullptr);
            return 0;
        case BM_SETSTYLE:
            if (m_button != nullptr && (wParam & BS_TYPEMASK) == BS_OWNERDRAW) m_button->SetOwnerDrawn();
            return 0;
        case BM_GETCHECK:
            return m_checkBox != nullptr && m_checkBox->isChecked() ? 1 : 0;
        case BM_SETCHECK:
            if (m_checkBox != nullptr) m_checkBox->setChecked(wParam != 0);
            return 0;
        default:
            return m_slider == nullptr ? 0 : SliderMessage(message, lParam);
    }
}

LRESULT QtNativeWidget::SliderMessage(UINT message, LPARAM lParam) {
    // What the player sets is not reported to it.
    const QSignalBlocker quiet(m_slider);
    switch (message) {
        case TBM_GETPOS:
            return m_slider->Position();
        case TBM_SETPOS:
            m_slider->SetPosition(static_cast<int>(lParam));
            return 0;
        case TBM_SETRANGEMIN:
            m_slider->SetPositionRange(static_cast<int>(lParam), m_slider->maximum());
            return 0;
        case TBM_SETRANGEMAX:
            m_slider->SetPositionRange(m_slider->minimum(), static_cast<int>(lParam));
            return 0;
        default:
            return 0;
    }
}

UINT QtNativeWidget::ItemState() const {
    if (m_button == nullptr) return 0;
    return (m_button->isDown() ? ODS_SELECTED : 0) | (m_button->isEnabled() ? 0 : ODS_DISABLED) |
           (m_button->hasFocus() ? ODS_FOCUS : 0);
}
