// SPDX-License-Identifier: MIT
#pragma once

#include "tools/dump/dump_options.h"

namespace tools {

// Treats all messages of the options, several at the same time, and prints what comes of each in the order in
// which they were given, as soon as it and those before it are done. Errors are told without stopping. False
// when there was one. Throws Interrupted once every half-written file is gone.
bool TreatAll(const DumpOptions& options);

}  // namespace tools
