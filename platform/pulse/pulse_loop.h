// SPDX-License-Identifier: MIT
// libpulse's main loop on a thread of its own, with the one lock that guards everything of libpulse's.
//
// Every callback of libpulse and every timer runs on that thread with the lock held; any thread may call
// libpulse while it holds the lock.
#pragma once

#include <pulse/thread-mainloop.h>

#include <chrono>
#include <functional>
#include <mutex>

class PulseLoop {
public:
    using Clock = std::chrono::steady_clock;

    // A call to be made soon, on the loop's thread, once. Everything with the lock held.
    class Timer {
    public:
        Timer(PulseLoop& loop, std::function<void()> call);
        ~Timer();
        Timer(const Timer&) = delete;
        Timer& operator=(const Timer&) = delete;

        // A timer that is set already keeps the earlier time.
        void Set(Clock::time_point due);
        void Cancel();

    private:
        pa_mainloop_api* const m_api;
        const std::function<void()> m_call;
        Clock::time_point m_due = Clock::time_point::max();
        pa_time_event* const m_event;
    };

    // Starts the thread.
    PulseLoop();
    ~PulseLoop();  // everything of libpulse's on this loop must be gone
    PulseLoop(const PulseLoop&) = delete;
    PulseLoop& operator=(const PulseLoop&) = delete;

    // Ends the thread, if it runs, and waits for that. Not on the loop's thread, not with the lock held.
    void Stop() { pa_threaded_mainloop_stop(m_loop); }

    // The lock, as std::unique_lock wants it. Not on the loop's thread.
    void lock() { pa_threaded_mainloop_lock(m_loop); }
    void unlock() { pa_threaded_mainloop_unlock(m_loop); }

    pa_mainloop_api* Api() { return pa_threaded_mainloop_get_api(m_loop); }

    // Wakes whoever waits in WaitUntil. Lock held.
    void Signal() { pa_threaded_mainloop_signal(m_loop, 0); }

    // Waits, with the lock released meanwhile, until `done` or the deadline; returns what `done` says then.
    template <typename Done>
    bool WaitUntil(Clock::time_point deadline, Done done) {
        Timer alarm(*this, [this] { Signal(); });
        while (!done() && Clock::now() < deadline) {
            alarm.Set(deadline);
            pa_threaded_mainloop_wait(m_loop);
        }
        return done();
    }

private:
    pa_threaded_mainloop* const m_loop;
};

// A member function as one of libpulse's callbacks, whose last argument is the object:
// PulseCallback<&Class::On>{}.
template <auto kMember>
struct PulseCallback;

template <typename Class, typename... Arguments, void (Class::*kMember)(Arguments...)>
struct PulseCallback<kMember> {
    template <typename Caller>
    using Function = void (*)(Caller*, Arguments..., void*);

    template <typename Caller>
    operator Function<Caller>() const {
        return [](Caller*, Arguments... arguments, void* self) {
            (static_cast<Class*>(self)->*kMember)(arguments...);
        };
    }
};
