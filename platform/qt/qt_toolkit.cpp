// SPDX-License-Identifier: MIT
#include "platform/qt/qt_toolkit.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <QEventLoop>
#include <QFontMetrics>
#include <QPainter>
#include <QToolTip>
#include <clocale>
#include <cstdint>
#include <tuple>
#include <utility>

#include "platform/framework/heap.h"
#include "platform/framework/message_queue.h"
#include "platform/framework/window.h"
#include "platform/qt/accessible.h"
#include "platform/qt/native_widget.h"
#include "platform/qt/toolkit.h"

namespace {

QtToolkit* g_toolkit = nullptr;

// The dialogs are drawn for a face of this size; the name is what the set-up installs, with any sans face in
// its place.
QFont MakeDialogFont() {
    QFont font(QStringLiteral("Liberation Sans"));
    font.setStyleHint(QFont::SansSerif);
    font.setPixelSize(11);
    // Shaping, where the script needs none, took a tenth of the time that playing takes
    // (docs/performance.md).
    font.setStyleStrategy(QFont::PreferNoShaping);
    return font;
}

}  // namespace

std::unique_ptr<NativeToolkit> CreateQtToolkit(int& argc, char** argv) {
    return std::make_unique<QtToolkit>(argc, argv);
}

QtToolkit::QtToolkit(int& argc, char** argv)
    : m_app(argc, argv),
      m_wakeFd(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)),
      m_wakeNotifier(m_wakeFd, QSocketNotifier::Read),
      m_dialogFont(MakeDialogFont()) {
    g_toolkit = this;
    // Numbers in the player's texts have a point, whatever the desktop's language.
    std::setlocale(LC_NUMERIC, "C");
    // The program ends with its main window and by nothing else.
    QApplication::setQuitOnLastWindowClosed(false);
    QObject::connect(&m_wakeNotifier, &QSocketNotifier::activated, [this] { OnWake(); });
    DescribeWindowsToAssistivePrograms();
    m_tipTimer.setSingleShot(true);
    m_tipGone.setSingleShot(true);
    m_rescale.setSingleShot(true);
    QObject::connect(&m_rescale, &QTimer::timeout, [] {
        windows::Rescale();
        _heapmin();
    });
    QObject::connect(&m_tipTimer, &QTimer::timeout, [this] { ShowTip(); });
}

QtToolkit::~QtToolkit() {
    // Widgets that were left to be deleted later go now, while the application still lives.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    m_wakeNotifier.setEnabled(false);
    close(m_wakeFd);
    g_toolkit = nullptr;
}

QtToolkit& QtToolkit::Instance() {
    return *g_toolkit;
}

void QtToolkit::Wake() {
    if (m_wakePending.exchange(true)) return;
    const std::uint64_t one = 1;
    // The counter cannot overflow, so the write cannot fail.
    [[maybe_unused]] const ssize_t written = write(m_wakeFd, &one, sizeof one);
}

void QtToolkit::OnWake() {
    // What is handled mostly asks for another round itself, to have painted what has just been painted.
    for (int round = 0; round < 2 && (round == 0 || m_wakePending); ++round) {
        std::uint64_t count = 0;
        [[maybe_unused]] const ssize_t got = read(m_wakeFd, &count, sizeof count);
        m_wakePending = false;
        DispatchPostedMessages();
        windows::PaintAll();
    }
}

void QtToolkit::Run() {
    if (!m_quit) QApplication::exec();
}

void QtToolkit::Quit() {
    m_quit = true;
    QCoreApplication::exit(0);
}

void QtToolkit::RunModal(HWND window) {
    QWidget* widget = WidgetOf(window);
    if (widget == nullptr) return;
    QEventLoop loop;
    m_modals.push_back({window, &loop, nullptr});
    QWidget* top = widget->window();
    top->setWindowModality(Qt::ApplicationModal);
    windows::Find(window)->native->Show(SW_SHOW);
    // What was posted before the message that is being handled has had its wake-up already.
    Wake();
    loop.exec();
    std::erase_if(m_modals, [&](const Modal& modal) { return modal.loop == &loop; });
}

void QtToolkit::EndModal(HWND window) {
    for (const Modal& modal : m_modals)
        if (modal.window == window && modal.loop != nullptr) modal.loop->exit();
}

void QtToolkit::WindowGone(HWND window) {
    // Ending one may take it out of the list.
    for (const Modal& modal : std::vector<Modal>(m_modals)) {
        if (modal.window != window) continue;
        if (modal.loop != nullptr) modal.loop->exit();
        if (modal.dialog != nullptr) modal.dialog->reject();
    }
    if (m_tipWindow == window) HideTip();
}

COLORREF QtToolkit::SystemColor(int index) {
    // Desktops here have pictures and no one colour; this stands for it.
    if (index == COLOR_BACKGROUND) return RGB(58, 110, 165);
    constexpr std::tuple<int, QPalette::ColorGroup, QPalette::ColorRole> kRoles[] = {
        {COLOR_BTNFACE, QPalette::Active, QPalette::Window},
        {COLOR_BTNSHADOW, QPalette::Active, QPalette::Dark},
        {COLOR_GRAYTEXT, QPalette::Disabled, QPalette::WindowText},
        {COLOR_BTNTEXT, QPalette::Active, QPalette::WindowText},
        {COLOR_BTNHIGHLIGHT, QPalette::Active, QPalette::Light},
    };
    for (const auto& [known, group, role] : kRoles) {
        if (index != known) continue;
        const QColor c = QApplication::palette().color(group, role);
        return RGB(static_cast<unsigned>(c.red()), static_cast<unsigned>(c.green()),
                   static_cast<unsigned>(c.blue()));
    }
    return 0;
}

void QtToolkit::DrawText(std::uint32_t* pixels, int width, int height, const std::string& text,
                         const RECT& rect, DWORD format, COLORREF color, double scale) {
    QImage image(reinterpret_cast<uchar*>(pixels), width, height, QImage::Format_RGB32);
    QPainter painter(&image);
    painter.setFont(m_dialogFont);
    painter.setPen(QColor(GetRValue(color), GetGValue(color), GetBValue(color)));
    const QRectF area(rect.left, rect.top, rect.right - rect.left, rect.bottom - rect.top);
    painter.setClipRect(area);
    painter.scale(scale, scale);
    Qt::Alignment flags = (format & SS_CENTERIMAGE) != 0 ? Qt::AlignVCenter : Qt::AlignTop;
    switch (format & SS_TYPEMASK) {
        case SS_CENTER:
            flags |= Qt::AlignHCenter;
            break;
        case SS_RIGHT:
            flags |= Qt::AlignRight;
            break;
        default:
            flags |= Qt::AlignLeft;
    }
    painter.drawText(QRectF(area.topLeft() / scale, area.size() / scale),
                     static_cast<int>(flags) | Qt::TextSingleLine | Qt::TextIncludeTrailingSpaces,
                     QString::fromStdString(text));
}

SIZE QtToolkit::TextExtent(const std::string& text) {
    const QFontMetrics metrics(m_dialogFont);
    return {metrics.horizontalAdvance(QString::fromStdString(text)), metrics.height()};
}

HWND QtToolkit::ActiveWindow() {
    const QWidget* active = QApplication::activeWindow();
    return active == nullptr ? nullptr : HandleOf(active);
}

HWND QtToolkit::FocusWindow() {
    const QWidget* focus = QApplication::focusWidget();
    return focus == nullptr ? nullptr : HandleOf(focus);
}

HWND QtToolkit::WindowAt(POINT screen) {
    const QWidget* widget = QApplication::widgetAt(screen.x, screen.y);
    return widget == nullptr ? nullptr : HandleOf(widget);
}

bool QtToolkit::IsKeyHeld(WPARAM key) {
    return QApplication::keyboardModifiers().testFlag(key == VK_SHIFT ? Qt::ShiftModifier
                                                                      : Qt::ControlModifier);
}

void QtToolkit::OfferTip(HWND window, const std::string& text, TipDelays delays) {
    // While another program is active the buttons do not light and name nothing.
    if (QApplication::activeWindow() == nullptr) return;
    const bool come = m_tipWindow != window || m_tip == Tip::kNone;
    if (!come && m_tip == Tip::kSpent) return;
    const QString before = std::exchange(m_tipText, QString::fromStdString(text));
    if (come) {
        m_tip = Tip::kWaiting;
        m_tipWindow = window;
        m_tipAutoPopMs = delays.autoPopMs;
        m_tipTimer.start(m_tipGone.isActive() ? delays.reshowMs : delays.initialMs);
    } else if (m_tip == Tip::kShown && m_tipText != before) {
        ShowTip();
    }
}

void QtToolkit::ShowTip() {
    QWidget* widget = WidgetOf(m_tipWindow);
    if (widget == nullptr) return;
    m_tip = Tip::kShown;
    QToolTip::showText(QCursor::pos(), m_tipText, widget, {}, m_tipAutoPopMs);
    m_tipGone.start(m_tipAutoPopMs);
}

void QtToolkit::HideTip() {
    m_tipTimer.stop();
    m_tip = Tip::kSpent;
    QToolTip::hideText();
}

void QtToolkit::PointerLeft(HWND window) {
    if (m_tipWindow != window) return;
    HideTip();
    m_tip = Tip::kNone;
}

void QtToolkit::SetAppId(const std::string& id) {
    QGuiApplication::setDesktopFileName(QString::fromStdString(id));
}

QFont QtToolkit::DialogFont(double scale) const {
    QFont font = m_dialogFont;
    font.setPixelSize(qRound(font.pixelSize() * scale));
    return font;
}

void QtToolkit::ScaleChanged() {
    m_rescale.start(0);
}

std::optional<Image> QtToolkit::DecodePng(std::span<const std::uint8_t> file) {
    const QImage image = QImage::fromData(file.data(), static_cast<int>(file.size()), "PNG");
    return image.isNull() ? std::nullopt : std::optional(FromQImage(image));
}

Image QtToolkit::ScaleImage(const Image& image, int width, int height) {
    return FromQImage(ToQImage(image).scaled(width, height, Qt::IgnoreAspectRatio, Qt::SmoothTransformation));
}

Image FromQImage(const QImage& image) {
    const QImage straight = image.convertToFormat(QImage::Format_ARGB32);
    const auto* pixels = reinterpret_cast<const std::uint32_t*>(straight.constBits());
    return {straight.width(),
            straight.height(),
            {pixels, pixels + std::ptrdiff_t{straight.width()} * straight.height()}};
}

QImage ToQImage(const Image& image) {
    return QImage(reinterpret_cast<const uchar*>(image.pixels.data()), image.width, image.height,
                  QImage::Format_ARGB32)
        .copy();
}
