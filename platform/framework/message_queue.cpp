#include "platform/framework/message_queue.h"

#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

#include "platform/framework/afxwin.h"
#include "platform/framework/window.h"

namespace {

// A message sent by another thread, which waits on its own stack until it is handled.
struct Sent {
    LRESULT result = 0;
    bool handled = false;
};

struct Entry {
    MSG message;
    Sent* sent;  // null for posted messages
};

// A ring that grows by doubling; 4096 messages are far more than a player ever lets wait, so that posting
// allocates nothing in practice.
class Queue {
public:
    Queue() : m_ring(4096) {}

    void Push(const Entry& entry) {
        if (m_count == m_ring.size()) Grow();
        m_ring[(m_first + m_count) % m_ring.size()] = entry;
        ++m_count;
    }
    Entry Pop() {
        const Entry entry = m_ring[m_first];
        m_first = (m_first + 1) % m_ring.size();
        --m_count;
        return entry;
    }
    std::size_t Count() const { return m_count; }

private:
    void Grow() {
        std::vector<Entry> larger(m_ring.size() * 2);
        for (std::size_t i = 0; i < m_count; ++i) larger[i] = m_ring[(m_first + i) % m_ring.size()];
        m_ring.swap(larger);
        m_first = 0;
    }
    std::vector<Entry> m_ring;
    std::size_t m_first = 0;
    std::size_t m_count = 0;
};

std::mutex g_mutex;
std::condition_variable g_handled;
Queue g_queue;
const std::thread::id g_uiThread = std::this_thread::get_id();

void Wake() {
    if (NativeToolkit* toolkit = Toolkit()) toolkit->Wake();
}

void Deliver(const Entry& entry) {
    const MSG& m = entry.message;
    if (entry.sent == nullptr) {
        if (windows::Lives(m.hwnd)) windows::DeliverInput(m);
        return;
    }
    const LRESULT result = windows::Call(m.hwnd, m.message, m.wParam, m.lParam);
    {
        const std::scoped_lock lock(g_mutex);
        entry.sent->result = result;
        entry.sent->handled = true;
    }
    g_handled.notify_all();
}

}  // namespace

BOOL PostMessage(HWND hWnd, UINT message, WPARAM wParam, LPARAM lParam) {
    // No toolkit goes before its last window, so it cannot go while this thread wakes it.
    const auto kept = windows::Keep(hWnd);
    if (!kept) return FALSE;
    {
        const std::scoped_lock lock(g_mutex);
        g_queue.Push({{hWnd, message, wParam, lParam}, nullptr});
    }
    Wake();
    return TRUE;
}

LRESULT SendMessage(HWND hWnd, UINT message, WPARAM wParam, LPARAM lParam) {
    if (std::this_thread::get_id() == g_uiThread) return windows::Call(hWnd, message, wParam, lParam);
    if (!windows::Lives(hWnd)) return 0;
    Sent sent;
    std::unique_lock lock(g_mutex);
    g_queue.Push({{hWnd, message, wParam, lParam}, &sent});
    Wake();
    g_handled.wait(lock, [&] { return sent.handled; });
    return sent.result;
}

BOOL IsWindow(HWND hWnd) {
    return windows::Lives(hWnd) ? TRUE : FALSE;
}

void DispatchPostedMessages() {
    std::unique_lock lock(g_mutex);
    // What is posted meanwhile waits for the next round, so that input and painting get their turn.
    for (std::size_t left = g_queue.Count(); left > 0 && g_queue.Count() > 0; --left) {
        const Entry entry = g_queue.Pop();
        lock.unlock();
        Deliver(entry);
        lock.lock();
    }
    const bool more = g_queue.Count() > 0;
    lock.unlock();
    if (more) Wake();
}
