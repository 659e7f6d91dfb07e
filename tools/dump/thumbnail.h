// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tools/export/message_file.h"

namespace tools {

// One small picture of a message as a PNG file for file managers: the first picture that is not nearly one
// colour, and for a message without pictures its levels with its duration. `size` is the longer side in
// pixels; a picture is never enlarged. How much of the message is read and decoded has a limit that does not
// depend on its length.
std::vector<uint8_t> DrawThumbnail(MessageFile& message, int size);

// Draws it, in a process that can do little else (MakeConfined), and writes it to `output`, "-" for
// standard output. Throws ToolError, and then `output` has not been created.
void WriteThumbnail(const std::string& message, const std::string& output, int size);

}  // namespace tools
