// SPDX-License-Identifier: MIT
#include "platform/framework/message_queue.h"

#include <mutex>
#include <thread>
#include <vector>

#include "platform/framework/afxwin.h"
#include "platform/framework/unsupported.h"
#include "platform/framework/window.h"

namespace {

// First in, first out, in memory that is kept: 4096 messages are far more than a player ever lets wait, so
// that posting allocates nothing in practice.
class Queue {
public:
    Queue() { m_messages.reserve(4096); }

    bool IsEmpty() const { return m_first == m_messages.size(); }
    std::size_t Count() const { return m_messages.size() - m_first; }
    void Push(const MSG& message) {
        if (m_messages.size() == m_messages.capacity()) {
            m_messages.erase(m_messages.begin(), m_messages.begin() + static_cast<std::ptrdiff_t>(m_first));
            m_first = 0;
        }
        m_messages.push_back(message);
    }
    MSG Pop() {
        const MSG message = m_messages[m_first++];
        if (IsEmpty()) {
            m_messages.clear();
            m_first = 0;
        }
        return message;
    }

private:
    std::vector<MSG> m_messages;
    std::size_t m_first = 0;
};

std::mutex g_mutex;
Queue g_queue;
const std::thread::id g_uiThread = std::this_thread::get_id();

void Wake() {
    if (NativeToolkit* toolkit = Toolkit()) toolkit->Wake();
}

}  // namespace

BOOL PostMessage(HWND hWnd, UINT message, WPARAM wParam, LPARAM lParam) {
    return PostMessages(hWnd, message, wParam, {&lParam, 1});
}

BOOL PostMessages(HWND hWnd, UINT message, WPARAM wParam, std::span<const LPARAM> lParams) {
    // No toolkit goes before its last window, so it cannot go while this thread wakes it.
    const auto kept = windows::Keep(hWnd);
    if (!kept) return FALSE;
    {
        const std::scoped_lock lock(g_mutex);
        for (const LPARAM lParam : lParams) g_queue.Push({hWnd, message, wParam, lParam});
    }
    Wake();
    return TRUE;
}

LRESULT SendMessage(HWND hWnd, UINT message, WPARAM wParam, LPARAM lParam) {
    if (std::this_thread::get_id() != g_uiThread) Unsupported("message sent by another thread", message);
    return windows::Call(hWnd, message, wParam, lParam);
}

BOOL IsWindow(HWND hWnd) {
    return windows::Lives(hWnd) ? TRUE : FALSE;
}

void DispatchPostedMessages() {
    std::unique_lock lock(g_mutex);
    // What is posted meanwhile waits for the next round, so that input and painting get their turn.
    for (std::size_t left = g_queue.Count(); left > 0 && !g_queue.IsEmpty(); --left) {
        const MSG message = g_queue.Pop();
        lock.unlock();
        if (windows::Find(message.hwnd) != nullptr) windows::DeliverInput(message);
        lock.lock();
    }
    const bool more = !g_queue.IsEmpty();
    lock.unlock();
    if (more) Wake();
}
