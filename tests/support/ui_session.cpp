#include "tests/support/ui_session.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QTimer>
#include <cstdlib>

#include "platform/framework/window.h"
#include "platform/qt/toolkit.h"
#include "res/player_resources.h"

namespace ui {

void PumpFor(int milliseconds) {
    PumpUntil([] { return false; }, milliseconds);
}

bool PumpUntil(const std::function<bool()>& condition, int milliseconds) {
    QElapsedTimer clock;
    clock.start();
    while (!condition()) {
        const qint64 left = milliseconds - clock.elapsed();
        if (left <= 0) return false;
        // Waking at least this often keeps conditions that no event announces prompt.
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        if (!condition()) {
            QEventLoop pause;
            QTimer::singleShot(1, &pause, &QEventLoop::quit);
            pause.exec();
        }
    }
    return true;
}

void PumpPosted() {
    QCoreApplication::processEvents();
    DispatchPostedMessages();
    windows::PaintAll();
    QCoreApplication::processEvents();
}

}  // namespace ui

int main(int argc, char** argv) {
    setenv("QT_QPA_PLATFORM", "offscreen", 0);
    ::testing::InitGoogleTest(&argc, argv);
    const auto toolkit = MakeQtToolkit(argc, argv);
    SetToolkit(toolkit.get());
    UsePlayerResources();
    const int result = RUN_ALL_TESTS();
    for (const HWND window : windows::All()) windows::Destroy(window);
    SetToolkit(nullptr);
    return result;
}
