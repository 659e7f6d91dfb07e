#include "tests/platform/sound/fake_message_queue.h"

#include <condition_variable>
#include <mutex>
#include <utility>

namespace {

std::mutex g_lock;
std::condition_variable g_posted;
std::vector<PostedMessage> g_messages;

}  // namespace

BOOL IsWindow(HWND hWnd) {
    return hWnd == kWindow ? TRUE : FALSE;
}

BOOL PostMessage(HWND hWnd, UINT message, WPARAM wParam, LPARAM lParam) {
    if (!IsWindow(hWnd)) return FALSE;
    const std::scoped_lock lock(g_lock);
    g_messages.push_back({{hWnd, message, wParam, lParam}, std::chrono::steady_clock::now()});
    g_posted.notify_all();
    return TRUE;
}

std::vector<PostedMessage> TakePosted() {
    const std::scoped_lock lock(g_lock);
    return std::exchange(g_messages, {});
}

bool WaitForPosted(std::size_t count, std::chrono::milliseconds timeout) {
    std::unique_lock lock(g_lock);
    return g_posted.wait_for(lock, timeout, [count] { return g_messages.size() >= count; });
}
