// SPDX-License-Identifier: MIT
#pragma once

#include <cstdlib>

// What holds for any bytes. libFuzzer keeps the input where it does not.
inline void Require(bool holds) {
    if (!holds) std::abort();
}
