// SPDX-License-Identifier: MIT
#include "platform/pulse/pulse_loop.h"

#include <pulse/timeval.h>

#include <algorithm>
#include <utility>

PulseLoop::Timer::Timer(PulseLoop& loop, std::function<void()> call)
    : m_api(loop.Api()),
      m_call(std::move(call)),
      m_event(m_api->time_new(
          m_api, nullptr,
          [](pa_mainloop_api*, pa_time_event*, const timeval*, void* self) {
              Timer& timer = *static_cast<Timer*>(self);
              timer.Cancel();
              timer.m_call();
          },
          this)) {}

PulseLoop::Timer::~Timer() {
    m_api->time_free(m_event);
}

void PulseLoop::Timer::Set(Clock::time_point due) {
    if (due >= m_due) return;
    m_due = due;
    const auto delay = std::chrono::ceil<std::chrono::microseconds>(due - Clock::now()).count();
    timeval when{};
    pa_gettimeofday(&when);
    pa_timeval_add(&when, static_cast<pa_usec_t>(std::max<decltype(delay)>(delay, 0)));
    m_api->time_restart(m_event, &when);
}

void PulseLoop::Timer::Cancel() {
    m_due = Clock::time_point::max();
    m_api->time_restart(m_event, nullptr);
}

PulseLoop::PulseLoop() : m_loop(pa_threaded_mainloop_new()) {
    pa_threaded_mainloop_set_name(m_loop, "sound");
    pa_threaded_mainloop_start(m_loop);
}

PulseLoop::~PulseLoop() {
    Stop();
    pa_threaded_mainloop_free(m_loop);
}
