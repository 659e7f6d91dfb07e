// SPDX-License-Identifier: MIT
#pragma once

#include "tools/make/make_options.h"

namespace tools {

// Writes the message that the options ask for. Throws ToolError when something cannot be read or written, and
// Interrupted once a signal has come; nothing is written then.
void MakeMessage(const MakeOptions& options);

}  // namespace tools
