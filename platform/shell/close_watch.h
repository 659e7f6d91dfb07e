// Waits for a newer instance's request to close.
#pragma once

#include <functional>
#include <thread>

#include "platform/shell/single_instance.h"

// A thread that sleeps until the guard has something to read. While the watch lives the guard is the
// thread's alone; it must outlive the watch. With a guard that has nothing to watch, no thread is made.
class CloseWatch {
public:
    // on_request is called on the watch's thread, once for each request.
    CloseWatch(NamedGuard& guard, std::function<void()> on_request);
    // Waits for a call that is under way; there is none afterwards.
    ~CloseWatch();
    CloseWatch(const CloseWatch&) = delete;
    CloseWatch& operator=(const CloseWatch&) = delete;

private:
    void Run();

    NamedGuard& m_guard;
    std::function<void()> m_on_request;
    int m_nStop = -1;  // readable when the thread is to end
    std::thread m_thread;
};
