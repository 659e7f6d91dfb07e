// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

namespace tools {

struct MakeOptions {
    std::string input;  // a film or sound file, which holds both; else `sound` and `pictures` are named
    std::string sound;
    std::vector<std::string> pictures;
    int rate = 0;  // pictures per second, 0 without pictures; of an input that may have some: always 1 to 5
    bool rate_asked = false;
    int quality = 3;
    std::string message;
    bool help = false;
    bool version = false;
};

// Reads the arguments that follow the program's name. Throws UsageError when they
// cannot be followed.
MakeOptions ParseMakeOptions(const std::vector<std::string>& arguments);

// What --help prints.
extern const char* const kMakeHelp;

}  // namespace tools
