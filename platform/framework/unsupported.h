// SPDX-License-Identifier: MIT
// How the layer refuses what it does not have.
#pragma once

#include <string>

// A style, a flag or a resource that the layer does not support is a mistake of the program, found at its
// first start: says what is missing on standard error and ends the program. Any thread.
[[noreturn]] void Unsupported(const char* what, const std::string& detail);
[[noreturn]] void Unsupported(const char* what, unsigned long value);
