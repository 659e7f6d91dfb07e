// SPDX-License-Identifier: MIT
#include "platform/framework/unsupported.h"

#include <cstdio>
#include <cstdlib>

void Unsupported(const char* what, const std::string& detail) {
    std::fprintf(stderr, "Unsupported %s: %s\n", what, detail.c_str());
    std::abort();
}

void Unsupported(const char* what, unsigned long value) {
    char number[24];
    std::snprintf(number, sizeof number, "0x%lx", value);
    Unsupported(what, number);
}
