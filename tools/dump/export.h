// SPDX-License-Identifier: MIT
#pragma once

#include "tools/dump/message_file.h"
#include "tools/dump/message_report.h"
#include "tools/dump/options.h"

namespace tools {

// Decodes a message that stands at its first record and writes what the options ask for. `report` is what
// the message holds. Throws ToolError when something cannot be written.
void ExportMessage(MessageFile& message, const MessageReport& report, const DumpOptions& options);

}  // namespace tools
