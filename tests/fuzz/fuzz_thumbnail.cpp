// SPDX-License-Identifier: MIT
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <string>

#include "tools/dump/thumbnail.h"
#include "tools/export/message_file.h"
#include "tools/tool_error.h"

// Any bytes as a message of which a file manager wants a picture; the first byte is its size.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const int file = memfd_create("message", 0);
    static const std::string path = "/proc/self/fd/" + std::to_string(file);
    if (size == 0 || ftruncate(file, 0) != 0 || pwrite(file, data + 1, size - 1, 0) < 0) return 0;
    try {
        tools::MessageFile message(path);
        if (tools::DrawThumbnail(message, 1 + data[0]).empty()) std::abort();
    } catch (const tools::ToolError&) {
    }
    return 0;
}
