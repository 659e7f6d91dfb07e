// SPDX-License-Identifier: MIT
#include "tools/export/output_file.h"

#include <sys/xattr.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <vector>

#include "tools/tool_error.h"

namespace tools {
namespace {

namespace fs = std::filesystem;

constexpr const char* kMadeBy = "user.trvdump.made-by";
constexpr std::size_t kStreamBuffer = std::size_t{1} << 17;

bool WasMadeBy(const std::string& path, const std::string& command) {
    std::vector<char> value(command.size() + 1);
    const ssize_t length = getxattr(path.c_str(), kMadeBy, value.data(), value.size());
    return length == std::ssize(command) && std::memcmp(value.data(), command.data(), command.size()) == 0;
}

}  // namespace

OutputFile::OutputFile(const std::string& path, const ReplaceRule& rule, const std::string& source)
    : path_(path), name_(path == "-" ? "standard output" : path), command_(rule.command) {
    std::error_code error;
    if (path == "-") {
        stream_ = stdout;
    } else if (fs::equivalent(source, path, error) && !error) {
        throw ToolError(path + ": is the message itself, not overwritten");
    } else if (const auto status = fs::status(path, error);
               fs::exists(status) && !fs::is_regular_file(status)) {
        stream_ = std::fopen(path.c_str(), "wb");
        if (stream_ == nullptr) Fail(errno);
    } else {
        if (fs::exists(status) && !rule.force && !WasMadeBy(path, rule.command))
            throw ToolError(path + ": is there already, not replaced (--force replaces it)");
        file_.emplace(path);
    }
    if (stream_ != nullptr) std::setvbuf(stream_, nullptr, _IOFBF, kStreamBuffer);
}

OutputFile::~OutputFile() {
    if (stream_ != nullptr && stream_ != stdout) std::fclose(stream_);
}

void OutputFile::Write(std::span<const uint8_t> bytes) {
    if (file_) {
        file_->Write(bytes);
    } else if (std::fwrite(bytes.data(), 1, bytes.size(), stream_) != bytes.size()) {
        Fail(errno);
    }
}

void OutputFile::Overwrite(long offset, std::span<const uint8_t> bytes) {
    file_->Overwrite(offset, bytes);
}

void OutputFile::Finish() {
    if (file_) {
        // Without attributes the file is as good, but only force replaces it.
        setxattr(file_->temporary().c_str(), kMadeBy, command_.data(), command_.size(), 0);
        file_->Commit(false);
        return;
    }
    std::FILE* const stream = stream_;
    const bool whole = stream == stdout ? std::fflush(stream) == 0 : std::fclose(stream) == 0;
    stream_ = stream == stdout ? stdout : nullptr;
    if (!whole) Fail(errno);
}

std::string OutputFile::path_for_program() const {
    // A name with a colon would be taken for a protocol's.
    return stream_ == stdout ? "pipe:1" : "file:" + (file_ ? file_->temporary() : path_);
}

void OutputFile::Fail(int reason) const {
    throw ToolError(name_ + ": cannot be written: " + std::strerror(reason));
}

}  // namespace tools
