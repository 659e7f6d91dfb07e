// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "tools/dump/message_report.h"

namespace tools {

// The report as one JSON object (RFC 8259). Bytes of the path that are no UTF-8 become U+FFFD.
std::string ReportAsJson(const MessageReport& report);

// The same JSON without line breaks.
std::string OnOneLine(const std::string& json);

// The object that stands for a file that is no message.
std::string ErrorAsJson(const std::string& path, const std::string& error);

}  // namespace tools
