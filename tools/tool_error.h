// SPDX-License-Identifier: MIT
#pragma once

#include <stdexcept>

namespace tools {

// What stops a tool, for standard error: names the file that it is about.
class ToolError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// A command line that cannot be followed; what() says why.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

}  // namespace tools
