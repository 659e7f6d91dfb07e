// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace tools {

// Writes one small picture of a message as a PNG file for file managers: the first picture that is not nearly
// one colour, and for a message without pictures its levels with its duration. `size` is the longer side in
// pixels; a picture is never enlarged. `output` may be "-" for standard output. How much of the message is
// read and decoded has a limit that does not depend on its length. Throws ToolError, and then `output` has
// not been created.
void WriteThumbnail(const std::string& message, const std::string& output, int size);

}  // namespace tools
