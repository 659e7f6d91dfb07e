// SPDX-License-Identifier: MIT
// The program's entry.
#include <QCoreApplication>
#include <QGuiApplication>
#include <cstdio>
#include <cstdlib>

#include "platform/framework/afxwin.h"
#include "platform/framework/window.h"
#include "platform/qt/toolkit.h"

int AfxWinMain(int argc, char** argv) {
    if (std::getenv("DISPLAY") == nullptr && std::getenv("WAYLAND_DISPLAY") == nullptr &&
        std::getenv("QT_QPA_PLATFORM") == nullptr) {
        std::fprintf(stderr, "%s: there is no display to show a window on.\n", argv[0]);
        return 1;
    }
    const auto toolkit = CreateQtToolkit(argc, argv);
    SetToolkit(toolkit.get());
    CWinApp* app = AfxGetApp();
    app->m_argc = argc;
    app->m_argv = argv;
    app->m_strExecutablePath = CString(QCoreApplication::applicationFilePath().toStdString());
    const int code = app->InitInstance() != FALSE ? app->Run() : app->ExitInstance();
    for (const HWND window : windows::All()) windows::Destroy(window);
    SetToolkit(nullptr);
    return code;
}
