// SPDX-License-Identifier: MIT
// Inside of the toolkit; see toolkit.h.
#pragma once

#include <QApplication>
#include <QDialog>
#include <QFont>
#include <QImage>
#include <QPointer>
#include <QSocketNotifier>
#include <QTimer>
#include <QWidget>
#include <atomic>

#include "platform/framework/native.h"

class QEventLoop;

class QtToolkit : public NativeToolkit {
public:
    QtToolkit(int& argc, char** argv);
    ~QtToolkit() override;

    std::unique_ptr<NativeWidget> CreateNativeWidget(Window& window) override;
    void Wake() override;
    void Run() override;
    void Quit() override;
    void RunModal(HWND window) override;
    void EndModal(HWND window) override;
    void MessageBox(HWND owner, const std::string& text, const std::string& caption, bool error) override;
    std::vector<std::string> ChooseFiles(HWND owner, const std::string& title,
                                         const std::vector<std::string>& filters,
                                         const FileQuestion& question) override;
    bool SavePicture(const std::string& path, const Image& image) override;
    void CopyPicture(const Image& image) override;
    void SetAppId(const std::string& id) override;
    void SetContentScale(double scale) override { m_contentScale = scale; }
    COLORREF SystemColor(int index) override;
    void DrawText(std::uint32_t* pixels, int width, int height, const std::string& text, const RECT& rect,
                  DWORD format, COLORREF color, double scale) override;
    std::optional<Image> DecodePng(std::span<const std::uint8_t> file) override;
    Image ScaleImage(const Image& image, int width, int height) override;
    SIZE TextExtent(const std::string& text) override;
    HWND ActiveWindow() override;
    HWND FocusWindow() override;
    HWND WindowAt(POINT screen) override;
    bool IsKeyHeld(WPARAM key) override;
    void OfferTip(HWND window, const std::string& text, TipDelays delays) override;
    void HideTip() override;
    void AnnounceValue(HWND window) override;

    static QtToolkit& Instance();
    QFont DialogFont(double scale) const;
    double ContentScale() const { return m_contentScale; }
    // Some window's picture no longer fits: has all looked at soon.
    void ScaleChanged();
    // A window's widget goes: what runs modally for it ends.
    void WindowGone(HWND window);
    // The pointer left the window: its tip may be offered anew when it comes back.
    void PointerLeft(HWND window);

private:
    void OnWake();
    void ShowTip();
    // Runs a dialog of the toolkit's own until it is closed or its owner goes.
    int RunDialog(HWND owner, QDialog* dialog);
    struct Modal {
        HWND window;  // the window that runs, or the owner of a toolkit dialog
        QPointer<QEventLoop> loop;
        QPointer<QDialog> dialog;
    };

    QApplication m_app;
    int m_wakeFd;
    QSocketNotifier m_wakeNotifier;
    std::atomic<bool> m_wakePending{false};
    bool m_quit = false;
    QFont m_dialogFont;
    double m_contentScale = 1.0;
    QTimer m_rescale;
    std::vector<Modal> m_modals;

    // Spent: not to be shown before the pointer has left the window.
    enum class Tip { kNone, kWaiting, kShown, kSpent };
    Tip m_tip = Tip::kNone;
    HWND m_tipWindow = nullptr;
    QString m_tipText;
    int m_tipAutoPopMs = 0;
    QTimer m_tipTimer;
    QTimer m_tipGone;  // runs for a moment after a tip was up
};

// Window widgets carry their handle.
HWND HandleOf(const QWidget* widget);
QImage ToQImage(const Image& image);
Image FromQImage(const QImage& image);
// Where a point of the window's widget is in its logical units.
QPoint ToLogical(HWND window, const QPointF& point);
