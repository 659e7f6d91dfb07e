// SPDX-License-Identifier: MIT
// The widgets that stand for windows: a surface, the three kinds of control, and the top-level frame.
#pragma once

#include <QAbstractButton>
#include <QCheckBox>
#include <QMenuBar>
#include <QSlider>

#include "platform/qt/input.h"

class QtNativeWidget;

// Shows a window's picture.
class SurfaceWidget : public WindowWidget<QWidget> {
public:
    SurfaceWidget(HWND window, QWidget* parent);
    // Puts a part of the picture, in device pixels, on the screen by the shortest way. False where there is
    // none: then it takes a paint event.
    bool CopyToScreen(const QRect& area);

protected:
    void paintEvent(QPaintEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    bool IsReadByServer(const QImage& pixels);
    const uchar* m_looked = nullptr;  // pixels that were looked at last
    bool m_shared = false;            // and whether others see them
};

// Copies a part of the window's picture to the widget.
void PaintSurface(QWidget* widget, HWND window, const QRect& area);
// From here on the painter's units are device pixels, counted from the widget's first one. Returns by how
// much of a pixel the widget's own corner lies beside it.
QPointF UseDevicePixels(QPainter& painter);

// Draws the edges of a child window's border and holds its client widget.
class EdgeWidget : public QWidget {
public:
    EdgeWidget(QWidget* parent, bool border, int sunken);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    bool m_border;
    int m_sunken;  // width of the sunken edge inside the border
};

// A push button: of the desktop's look, or showing what the player drew (owner-drawn).
class ButtonWidget : public WindowWidget<QAbstractButton> {
public:
    ButtonWidget(HWND window, QWidget* parent, bool isDefault);
    void SetOwnerDrawn() { m_ownerDrawn = true; }

protected:
    void paintEvent(QPaintEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void StateChanged();
    bool m_ownerDrawn = false;
    bool m_default;
};

class CheckBoxWidget : public WindowWidget<QCheckBox> {
public:
    CheckBoxWidget(HWND window, QWidget* parent);
};

// A vertical trackbar, whose positions count down from the top. The toolkit's value counts up from the
// bottom, as the toolkit draws it and as assistive programs report it.
class SliderWidget : public WindowWidget<QSlider> {
public:
    SliderWidget(HWND window, QWidget* parent);
    int Position() const;
    void SetPosition(int position);
    // Keeps the position where the range allows it; keyboard steps follow the range.
    void SetPositionRange(int lowest, int highest);

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    void RangeChanged();
    void Notify(int position);
};

// A top-level window: its menu bar, if any, and the client area below it.
class TopLevelWidget : public QWidget {
public:
    TopLevelWidget(const Window& window, QWidget* owner);
    QWidget* ClientParent() { return m_holder; }
    void SetClientSize(const QSize& size);
    // Shows one window's widget alone on the whole screen, until Uncover. The rest stays where it is, with
    // the focus, and the menu's keys go on working.
    void CoverWith(QtNativeWidget* alone);
    void Uncover();
    void SetShortcut(unsigned command, const QString& shortcuts);

protected:
    void closeEvent(QCloseEvent* event) override;
    void changeEvent(QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void BuildMenu(unsigned menuId);
    void LayOutCover();
    void FollowScreen();
    void LiftLimits();
    HWND m_window;
    QMenuBar* m_menuBar = nullptr;
    QWidget* m_holder;
    QSize m_clientSize;
    double m_ratio = 0;  // of device pixels, when the size was set
    QWidget* m_cover = nullptr;
    QtNativeWidget* m_alone = nullptr;
};
