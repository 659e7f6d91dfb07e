// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <string>

#include "tools/dump/dump_options.h"

namespace tools {

// What came of one message.
struct TaskResult {
    std::string printed;     // for standard output
    std::string complaints;  // for standard error, whole lines
    bool failed = false;
};

// Told how much of a message is done, 0 to 1, and how many seconds of it that is.
using TaskWatch = std::function<void(double share, double played)>;

// Does what the options ask for with one message, on any thread. Decoders and encoders take up to `threads`
// threads. Only what `watch` throws comes out.
TaskResult TreatMessage(const DumpOptions& options, const std::string& message, unsigned threads,
                        const TaskWatch& watch);

}  // namespace tools
