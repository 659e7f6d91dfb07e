// SPDX-License-Identifier: MIT
// The least that a window of the toolkit costs: what the player's memory is measured against.
#include <QApplication>
#include <QWidget>

int main(int argc, char** argv) {
    const QApplication app(argc, argv);
    QWidget window;
    window.resize(340, 340);
    window.show();
    return QApplication::exec();
}
