// libpulse's main loop on a thread of its own, and the one lock that guards everything of libpulse's.
//
// Every callback of libpulse and every timer runs on that thread with the lock held; any thread may call
// libpulse while it holds the lock. The thread lets go of the lock while it sleeps and while it delivers
// notices, so no client is ever called with the lock held.
#pragma once

#include <pulse/mainloop-api.h>
#include <pulse/mainloop.h>

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

class PulseLoop {
public:
    using Clock = std::chrono::steady_clock;

    // A call to be made soon, on the loop's thread, once.
    class Timer {
    public:
        // Made and destroyed with the lock held.
        Timer(PulseLoop& loop, std::function<void()> call);
        ~Timer();
        Timer(const Timer&) = delete;
        Timer& operator=(const Timer&) = delete;

        // Lock held. A timer that is set already keeps the earlier time.
        void Set(Clock::time_point due);
        void Cancel();

    private:
        friend class PulseLoop;
        PulseLoop& m_loop;
        std::function<void()> m_call;
        Clock::time_point m_due = Clock::time_point::max();
    };

    // `unlocked` is called on the loop's thread without the lock, before it sleeps. True when the loop should
    // look around once more before it does.
    explicit PulseLoop(std::function<bool()> unlocked);
    ~PulseLoop();  // ends the thread; everything of libpulse's on this loop must be gone
    PulseLoop(const PulseLoop&) = delete;
    PulseLoop& operator=(const PulseLoop&) = delete;

    // Starts the thread.
    void Start();
    // Ends the thread, if it runs, and waits for that. Not on the loop's thread, not with the lock held.
    void Stop();

    std::unique_lock<std::mutex> Lock() { return std::unique_lock(m_lock); }
    pa_mainloop_api* Api() { return pa_mainloop_get_api(m_loop); }

    // Wakes the thread, so that `unlocked` is called. Lock held.
    void Wake() { pa_mainloop_wakeup(m_loop); }

    // Wakes whoever waits in WaitUntil. Lock held.
    void Signal() { m_changed.notify_all(); }

    // Waits, with the lock released meanwhile, until `done` or the deadline; gives what `done` says then.
    template <typename Done>
    bool WaitUntil(std::unique_lock<std::mutex>& lock, Clock::time_point deadline, Done done) {
        return m_changed.wait_until(lock, deadline, done);
    }

    // Has `call` called with the target and the value, in the order of these calls, once the lock has been
    // released. Lock held.
    void Notify(std::shared_ptr<void> target, void (*call)(void* target, std::uint64_t value),
                std::uint64_t value);

private:
    struct Notice {
        std::shared_ptr<void> target;
        void (*call)(void*, std::uint64_t);
        std::uint64_t value;
    };

    bool OnOwnThread() const { return std::this_thread::get_id() == m_thread.get_id(); }
    static int Poll(pollfd* fds, unsigned long count, int timeout, void* self);
    void Deliver();
    int Remaining(int timeout) const;
    void RunTimers();

    std::mutex m_lock;
    std::condition_variable m_changed;
    pa_mainloop* m_loop;
    std::function<bool()> m_unlocked;
    std::vector<Timer*> m_timers;
    std::vector<Notice> m_notices;
    std::vector<Notice> m_delivering;
    std::thread m_thread;
};
