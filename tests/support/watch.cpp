// SPDX-License-Identifier: MIT
#include "tests/support/watch.h"

#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>

namespace watch {
namespace {

constexpr const char* kTasks = "/proc/self/task";

}  // namespace

bool Eventually(const std::function<bool()>& condition, std::chrono::milliseconds within,
                const std::function<void()>& between) {
    const auto deadline = Clock::now() + within;
    while (!condition()) {
        if (Clock::now() >= deadline) return false;
        if (between) {
            between();
        } else {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    }
    return true;
}

Lateness::~Lateness() {
    m_done = true;
    m_watch.join();
}

void Lateness::Watch() {
    while (!m_done) {
        const auto due = Clock::now() + std::chrono::milliseconds(5);
        std::this_thread::sleep_until(due);
        m_worst = std::max<double>(m_worst, Ms(Clock::now() - due));
    }
}

double ProcessorMs() {
    timespec time = {};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

int ThreadCount() {
    // The thread sanitizer starts a thread of its own beside the program's first one.
    [[maybe_unused]] static const bool primed = (std::thread([] {}).join(), true);
    return static_cast<int>(std::distance(std::filesystem::directory_iterator(kTasks), {}));
}

bool OthersSleep() {
    const std::string own = std::to_string(gettid());
    for (const auto& task : std::filesystem::directory_iterator(kTasks)) {
        if (task.path().filename() == own) continue;
        std::string stat;
        std::getline(std::ifstream(task.path() / "stat"), stat);
        // The state follows the name in parentheses; a thread that has just ended has none.
        const std::size_t name = stat.rfind(')');
        if (name != std::string::npos && stat.at(name + 2) != 'S') return false;
    }
    return true;
}

}  // namespace watch
