// SPDX-License-Identifier: MIT
// The end of the pacing thread.
#include <atomic>
#include <chrono>
#include <thread>

#include "res/resource.h"
#include "tests/support/ui_test.h"
#include "tests/support/watch.h"
#include "video/video_wnd.h"

// CEvent::Lock as the renderer calls it comes here first (the linker's --wrap), so that a test can hold the
// pacing thread just before it waits.
BOOL LockItself(CEvent* event, DWORD timeout) __asm__("__real__ZN6CEvent4LockEj");
BOOL LockHeld(CEvent* event, DWORD timeout) __asm__("__wrap__ZN6CEvent4LockEj");

namespace {
std::atomic<bool> g_holdAtWait = false, g_heldAtWait = false;
}

BOOL LockHeld(CEvent* event, DWORD timeout) {
    if (!g_holdAtWait) return LockItself(event, timeout);
    g_heldAtWait = true;
    while (g_holdAtWait) std::this_thread::yield();
    return LockItself(event, timeout);
}

namespace {

using namespace std::chrono_literals;

// Pause comes when the pacing thread has seen that it shall run, but does not wait for a tick yet. Where its
// signal is lost, Pause never returns.
TEST(VideoWndThreads, PauseBetweenThePacingThreadsLookAndItsWaitEndsItAllTheSame) {
    ui_test::HostDialog host(IDD_PLAYER_DIALOG);
    CVideoWnd video(&host, nullptr, 64, 48, 1, 20);
    g_holdAtWait = true;
    video.Play();
    ASSERT_TRUE(watch::Eventually([] { return g_heldAtWait.load(); }, 10s));
    std::thread release([] {
        std::this_thread::sleep_for(100ms);
        g_holdAtWait = false;
    });
    video.Pause();  // would not return
    release.join();
}

}  // namespace
