// SPDX-License-Identifier: MIT
#include "tools/progress.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <utility>

namespace tools {
namespace {

constexpr auto kPatience = std::chrono::milliseconds(500);
constexpr auto kInterval = std::chrono::milliseconds(100);
constexpr double kMostSecondsLeft = 100 * 3600;

}  // namespace

Progress::Progress(std::string title)
    : title_(std::move(title)),
      on_terminal_(isatty(STDERR_FILENO) == 1),
      begun_(Clock::now()),
      next_(begun_ + kPatience) {}

Progress::~Progress() {
    if (shown_) std::fputs("\r\033[K", stderr);
}

void Progress::Show(double done, double played) {
    if (!on_terminal_) return;
    const auto now = Clock::now();
    if (now < next_) return;
    next_ = now + kInterval;
    shown_ = true;
    done = std::clamp(done, 0.0, 1.0);
    const double seconds = std::chrono::duration<double>(now - begun_).count();
    std::fprintf(stderr, "\r%s: %3.0f %%", title_.c_str(), done * 100);
    if (played > 0) std::fprintf(stderr, ", %.0f times as fast as it plays", played / seconds);
    if (done > 0) {
        const auto left = static_cast<int>(std::min(seconds * (1 - done) / done, kMostSecondsLeft));
        std::fprintf(stderr, ", %d:%02d left", left / 60, left % 60);
    }
    std::fputs("\033[K", stderr);
    std::fflush(stderr);
}

}  // namespace tools
