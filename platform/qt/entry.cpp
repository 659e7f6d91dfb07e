// SPDX-License-Identifier: MIT
// The program's entry.
#include <malloc.h>
#include <QCoreApplication>
#include <QGuiApplication>
#include <cstdio>
#include <cstdlib>

#include "platform/framework/afxwin.h"
#include "platform/framework/window.h"
#include "platform/qt/toolkit.h"

namespace {

// A picture or a window's surface is larger than this. Each then has pages of its own, which the system has
// back when it goes. Left to itself the allocator learns from the first ones freed to keep all later ones in
// its heap, where a few small things that live on hold tens of megabytes.
constexpr int large_block = 128 * 1024;

// Each message starts threads, and each thread would go to another heap, up to eight a processor. They
// allocate too little to be in each other's way.
constexpr int heaps = 2;

}  // namespace

int AfxWinMain(int argc, char** argv) {
    if (std::getenv("DISPLAY") == nullptr && std::getenv("WAYLAND_DISPLAY") == nullptr &&
        std::getenv("QT_QPA_PLATFORM") == nullptr) {
        std::fprintf(stderr, "%s: there is no display to show a window on.\n", argv[0]);
        return 1;
    }
    mallopt(M_MMAP_THRESHOLD, large_block);
    mallopt(M_ARENA_MAX, heaps);
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
