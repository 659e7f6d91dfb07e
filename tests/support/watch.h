// Watching time, the processor and this process's threads.
#pragma once

#include <chrono>
#include <functional>

namespace watch {

using Clock = std::chrono::steady_clock;

inline double Ms(Clock::duration duration) {
    return std::chrono::duration<double, std::milli>(duration).count();
}

// Looks every millisecond, or after whatever `between` does instead of sleeping so long; false when the
// condition does not hold within the time.
bool Eventually(const std::function<bool()>& condition, std::chrono::milliseconds within,
                const std::function<void()>& between = {});

// Processor time of the whole process so far, in milliseconds.
double ProcessorMs();

int ThreadCount();
// Whether all threads but the calling one sleep: they have done what there was to do.
bool OthersSleep();

}  // namespace watch
