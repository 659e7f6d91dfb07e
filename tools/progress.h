// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <string>

namespace tools {

// How far work has come that takes longer than a moment: share, speed and time left, on standard error.
// Silent unless standard error is a terminal. The line is wiped out when the object goes. One thread at a
// time.
class Progress {
public:
    explicit Progress(std::string title);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    // `done` runs from 0 to 1. `played` is how many seconds of a message have been worked on; 0: not known.
    // Cheap enough to be called at every step.
    void Show(double done, double played = 0);

private:
    using Clock = std::chrono::steady_clock;

    std::string title_;
    bool on_terminal_;
    bool shown_ = false;
    Clock::time_point begun_;
    Clock::time_point next_;
};

}  // namespace tools
