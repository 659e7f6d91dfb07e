// SPDX-License-Identifier: MIT
#include "platform/framework/mmtimer.h"

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <system_error>
#include <thread>

#include "platform/framework/handle_table.h"

namespace {

using Clock = std::chrono::steady_clock;

class Timer {
public:
    Timer(MMTIMERID id, UINT delay, UINT period, TIMECALLBACK callback, DWORD_PTR user)
        : m_id(id),
          m_period(period),
          m_callback(callback),
          m_user(user),
          m_first(Clock::now() + std::chrono::milliseconds(delay)),
          m_thread([this] { Run(); }) {}

    ~Timer() {
        {
            const std::scoped_lock lock(m_mutex);
            m_stop = true;
        }
        m_condition.notify_one();
        m_thread.join();
    }

private:
    void Run() {
        Clock::time_point due = m_first;
        std::unique_lock lock(m_mutex);
        while (!m_stop) {
            if (m_condition.wait_until(lock, due, [this] { return m_stop; })) return;
            lock.unlock();
            m_callback(m_id, 0, m_user, 0, 0);
            lock.lock();
            // Calls that have become due meanwhile are dropped.
            const Clock::time_point now = Clock::now();
            do due += m_period;
            while (due <= now);
        }
    }

    const MMTIMERID m_id;
    const std::chrono::milliseconds m_period;
    const TIMECALLBACK m_callback;
    const DWORD_PTR m_user;
    const Clock::time_point m_first;
    std::mutex m_mutex;
    std::condition_variable m_condition;
    bool m_stop = false;
    std::thread m_thread;  // last: it uses all of the above
};

HandleTable<Timer, MMTIMERID> g_timers;

}  // namespace

MMTIMERID timeSetEvent(UINT period, UINT resolution, TIMECALLBACK callback, DWORD_PTR user, UINT flags) {
    return timeSetEventAfter(period, period, resolution, callback, user, flags);
}

MMTIMERID timeSetEventAfter(UINT delay, UINT period, UINT, TIMECALLBACK callback, DWORD_PTR user,
                            UINT flags) {
    if (period == 0 || flags != TIME_PERIODIC) return 0;
    const MMTIMERID id = g_timers.Reserve();
    try {
        g_timers.Add(id, std::make_shared<Timer>(id, delay, period, callback, user));
    } catch (const std::system_error&) {
        return 0;  // no thread left
    }
    return id;
}

UINT timeKillEvent(MMTIMERID timer) {
    // Waits for a running callback as it is destroyed.
    return g_timers.Remove(timer) == nullptr ? 1 : 0;
}
