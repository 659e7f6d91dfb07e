#include "platform/framework/mmtimer.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <map>
#include <memory>
#include <mutex>
#include <system_error>
#include <thread>

namespace {

using Clock = std::chrono::steady_clock;

class Timer {
public:
    Timer(MMTIMERID id, UINT period, TIMECALLBACK callback, DWORD_PTR user)
        : m_id(id), m_period(period), m_callback(callback), m_user(user), m_thread([this] { Run(); }) {}

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
        Clock::time_point due = m_start + m_period;
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
    const Clock::time_point m_start = Clock::now();
    std::mutex m_mutex;
    std::condition_variable m_condition;
    bool m_stop = false;
    std::thread m_thread;  // last: it uses all of the above
};

std::mutex g_mutex;
std::map<MMTIMERID, std::unique_ptr<Timer>> g_timers;
MMTIMERID g_lastId = 0;
std::atomic<int> g_periodRequests{0};

}  // namespace

UINT timeBeginPeriod(UINT) {
    ++g_periodRequests;
    return 0;
}

UINT timeEndPeriod(UINT) {
    --g_periodRequests;
    return 0;
}

int timeGetPeriodRequests() {
    return g_periodRequests;
}

MMTIMERID timeSetEvent(UINT period, UINT, TIMECALLBACK callback, DWORD_PTR user, UINT flags) {
    if (period == 0 || flags != TIME_PERIODIC) return 0;
    const std::scoped_lock lock(g_mutex);
    const MMTIMERID id = ++g_lastId;
    try {
        g_timers.emplace(id, std::make_unique<Timer>(id, period, callback, user));
    } catch (const std::system_error&) {
        return 0;
    }
    return id;
}

UINT timeKillEvent(MMTIMERID timer) {
    std::unique_ptr<Timer> ended;
    {
        const std::scoped_lock lock(g_mutex);
        const auto found = g_timers.find(timer);
        if (found == g_timers.end()) return 1;
        ended = std::move(found->second);
        g_timers.erase(found);
    }
    return 0;
}
