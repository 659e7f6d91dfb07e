#include "platform/pulse/pulse_loop.h"

#include <poll.h>
#include <pthread.h>
#include <signal.h>

#include <algorithm>
#include <utility>

namespace {

// Far more than ever wait at once: a notice or two per wake-up.
constexpr std::size_t kNoticeRoom = 256;

}  // namespace

PulseLoop::Timer::Timer(PulseLoop& loop, std::function<void()> call) : m_loop(loop), m_call(std::move(call)) {
    m_loop.m_timers.push_back(this);
}

PulseLoop::Timer::~Timer() {
    std::erase(m_loop.m_timers, this);
}

void PulseLoop::Timer::Set(Clock::time_point due) {
    if (due >= m_due) return;
    m_due = due;
    // The loop's own thread looks at the timers before it sleeps.
    if (!m_loop.OnOwnThread()) m_loop.Wake();
}

void PulseLoop::Timer::Cancel() {
    m_due = Clock::time_point::max();
}

PulseLoop::PulseLoop(std::function<bool()> unlocked)
    : m_loop(pa_mainloop_new()), m_unlocked(std::move(unlocked)) {
    m_notices.reserve(kNoticeRoom);
    m_delivering.reserve(kNoticeRoom);
    pa_mainloop_set_poll_func(m_loop, &PulseLoop::Poll, this);
}

PulseLoop::~PulseLoop() {
    Stop();
    pa_mainloop_free(m_loop);
}

void PulseLoop::Start() {
    // The program's signals are for the program's own threads.
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    const auto lock = Lock();
    m_thread = std::thread([this] {
        pthread_setname_np(pthread_self(), "sound");
        const auto held = Lock();
        pa_mainloop_run(m_loop, nullptr);
    });
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

void PulseLoop::Stop() {
    if (!m_thread.joinable()) return;
    {
        const auto lock = Lock();
        pa_mainloop_quit(m_loop, 0);
    }
    m_thread.join();
}

void PulseLoop::Notify(std::shared_ptr<void> target, void (*call)(void*, std::uint64_t),
                       std::uint64_t value) {
    m_notices.push_back({std::move(target), call, value});
    if (!OnOwnThread()) Wake();
}

int PulseLoop::Poll(pollfd* fds, unsigned long count, int timeout, void* self) {
    PulseLoop& loop = *static_cast<PulseLoop*>(self);
    timeout = loop.Remaining(timeout);
    loop.m_delivering.swap(loop.m_notices);
    loop.m_lock.unlock();
    loop.Deliver();
    if (loop.m_unlocked()) timeout = 0;
    const int ready = poll(fds, count, timeout);
    loop.m_lock.lock();
    loop.RunTimers();
    return ready;
}

void PulseLoop::Deliver() {
    for (const Notice& notice : m_delivering) notice.call(notice.target.get(), notice.value);
    m_delivering.clear();
}

int PulseLoop::Remaining(int timeout) const {
    Clock::time_point next = Clock::time_point::max();
    for (const Timer* timer : m_timers) next = std::min(next, timer->m_due);
    if (next == Clock::time_point::max()) return timeout;
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(next - Clock::now()).count();
    const int own = static_cast<int>(std::clamp<decltype(left)>(left, 0, 1000000));
    return timeout < 0 ? own : std::min(timeout, own);
}

void PulseLoop::RunTimers() {
    const Clock::time_point now = Clock::now();
    for (std::size_t i = 0; i < m_timers.size(); ++i) {
        Timer& timer = *m_timers[i];
        if (timer.m_due > now) continue;
        timer.m_due = Clock::time_point::max();
        timer.m_call();
    }
}
