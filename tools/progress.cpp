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

}  // namespace

Progress::Progress(std::string title)
    : title_(std::move(title)), on_terminal_(isatty(STDERR_FILENO) == 1), next_(Clock::now() + kPatience) {}

Progress::~Progress() {
    if (shown_) std::fputs("\r\033[K", stderr);
}

void Progress::Show(double done) {
    if (!on_terminal_) return;
    const auto now = Clock::now();
    if (now < next_) return;
    next_ = now + kInterval;
    shown_ = true;
    std::fprintf(stderr, "\r%s: %3.0f %%", title_.c_str(), std::clamp(done, 0.0, 1.0) * 100);
    std::fflush(stderr);
}

}  // namespace tools
