// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <span>
#include <string>

#include "tools/tool_error.h"

namespace tools {

// A file that appears under its name only when it is whole: written beside it under another name, renamed
// by Commit(). Without Commit() nothing is left behind. A symbolic link keeps being one; its target is
// replaced. Every operation throws ToolError.
class AtomicFile {
public:
    explicit AtomicFile(const std::filesystem::path& path);
    ~AtomicFile();
    AtomicFile(const AtomicFile&) = delete;
    AtomicFile& operator=(const AtomicFile&) = delete;

    void Write(std::span<const uint8_t> bytes);
    // Replaces bytes that were written already.
    void Overwrite(long offset, std::span<const uint8_t> bytes);
    // Where it is until then, for another program to write; that one keeps the file that is there.
    const std::string& temporary() const { return temporary_; }
    // Gives the file its name. With `to_disk` it is on the disk by then, also after a power cut; what can be
    // made again need not wait for that.
    void Commit(bool to_disk = true);

private:
    [[noreturn]] void Fail(const std::string& what) const;

    std::filesystem::path target_;
    std::string temporary_;
    std::FILE* stream_ = nullptr;
};

}  // namespace tools
