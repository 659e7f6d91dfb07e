// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <string>

namespace tools {

// A percentage on standard error, for work that takes longer than a moment. Silent unless standard error is
// a terminal. The line is wiped out when the object goes.
class Progress {
public:
    explicit Progress(std::string title);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    // `done` runs from 0 to 1. Cheap enough to be called at every step.
    void Show(double done);

private:
    using Clock = std::chrono::steady_clock;

    std::string title_;
    bool on_terminal_;
    bool shown_ = false;
    Clock::time_point next_;
};

}  // namespace tools
