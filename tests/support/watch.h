// SPDX-License-Identifier: MIT
// Watching time, the processor and this process's threads.
#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <thread>

namespace watch {

using Clock = std::chrono::steady_clock;

// Whether a sanitizer slows this build down many times.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
inline constexpr bool kSanitized = true;
#else
inline constexpr bool kSanitized = false;
#endif

inline double Ms(Clock::duration duration) {
    return std::chrono::duration<double, std::milli>(duration).count();
}

// Looks every millisecond, or after whatever `between` does instead of sleeping so long; false when the
// condition does not hold within the time.
bool Eventually(const std::function<bool()>& condition, std::chrono::milliseconds within,
                const std::function<void()>& between = {});

// How late this machine wakes a thread while it lives, at worst: what a limit of real time has to allow for.
class Lateness {
public:
    ~Lateness();
    double WorstMs() const { return m_worst; }

private:
    void Watch();

    std::atomic<bool> m_done = false;
    std::atomic<double> m_worst = 0;
    std::thread m_watch{[this] { Watch(); }};
};

// Processor time of the whole process so far, in milliseconds.
double ProcessorMs();

int ThreadCount();
// Whether all threads but the calling one sleep: they have done what there was to do.
bool OthersSleep();

}  // namespace watch
