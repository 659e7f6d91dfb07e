// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <cstdio>
#include <optional>
#include <span>
#include <string>

#include "tools/atomic_file.h"

namespace tools {

// When a file that exists may be replaced: always by force; otherwise only where the file's attributes say
// that it was made by the same command, which `command` describes. File systems without attributes need
// force.
struct ReplaceRule {
    bool force = false;
    std::string command;
};

// Where something is saved: a file that appears when it is whole, a device or a pipe that is there already,
// or standard output. Every operation throws ToolError; a file that is not finished leaves nothing behind.
class OutputFile {
public:
    // `path` "-" is standard output. The file at `source`, which is being read, is never replaced.
    OutputFile(const std::string& path, const ReplaceRule& rule, const std::string& source);
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    // For people.
    const std::string& name() const { return name_; }
    // Whether what was written can be changed.
    bool can_go_back() const { return file_.has_value(); }

    void Write(std::span<const uint8_t> bytes);
    void Overwrite(long offset, std::span<const uint8_t> bytes);
    void Finish();

    // For another program that writes all of it: what it opens, and the descriptor that is to be its standard
    // output, or -1.
    std::string path_for_program() const;
    int descriptor_for_program() const { return stream_ == stdout ? fileno(stdout) : -1; }

private:
    [[noreturn]] void Fail(int reason) const;

    std::string path_;
    std::string name_;
    std::string command_;
    std::optional<AtomicFile> file_;
    std::FILE* stream_ = nullptr;  // where it is no such file
};

}  // namespace tools
