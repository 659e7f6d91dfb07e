// SPDX-License-Identifier: MIT
#include "tools/atomic_file.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <system_error>

namespace tools {
namespace {

std::string ReasonOf(int error) {
    return std::generic_category().message(error);
}

// mkstemp makes files that only their owner may read; a message gets the rights of any new file.
mode_t NewFileMode() {
    const mode_t mask = umask(0);
    umask(mask);
    return static_cast<mode_t>(0666) & ~mask;
}

}  // namespace

AtomicFile::AtomicFile(const std::filesystem::path& path) : target_(path) {
    std::error_code error;
    const auto status = std::filesystem::status(path, error);
    if (std::filesystem::exists(status)) {
        if (!std::filesystem::is_regular_file(status)) {
            throw ToolError(path.string() + ": not a regular file, nothing written");
        }
        target_ = std::filesystem::canonical(path, error);
        if (error) target_ = path;
    }

    temporary_ = target_.string() + ".XXXXXX";
    const int descriptor = mkstemp(temporary_.data());
    if (descriptor < 0) {
        temporary_.clear();
        Fail("cannot be written: " + ReasonOf(errno));
    }
    if (fchmod(descriptor, NewFileMode()) == 0) stream_ = fdopen(descriptor, "wb");
    if (stream_ == nullptr) {
        const int reason = errno;
        close(descriptor);
        unlink(temporary_.c_str());
        Fail("cannot be written: " + ReasonOf(reason));
    }
}

AtomicFile::~AtomicFile() {
    if (stream_ != nullptr) std::fclose(stream_);
    if (!temporary_.empty()) unlink(temporary_.c_str());
}

void AtomicFile::Write(std::span<const uint8_t> bytes) {
    if (std::fwrite(bytes.data(), 1, bytes.size(), stream_) != bytes.size()) {
        Fail("cannot be written: " + ReasonOf(errno));
    }
}

void AtomicFile::Overwrite(long offset, std::span<const uint8_t> bytes) {
    if (std::fseek(stream_, offset, SEEK_SET) != 0) Fail("cannot be written: " + ReasonOf(errno));
    Write(bytes);
    if (std::fseek(stream_, 0, SEEK_END) != 0) Fail("cannot be written: " + ReasonOf(errno));
}

void AtomicFile::Commit(bool to_disk) {
    bool whole = std::fflush(stream_) == 0 && (!to_disk || fsync(fileno(stream_)) == 0);
    int reason = errno;
    if (std::fclose(stream_) != 0) {
        if (whole) reason = errno;
        whole = false;
    }
    stream_ = nullptr;
    if (whole && std::rename(temporary_.c_str(), target_.c_str()) != 0) {
        whole = false;
        reason = errno;
    }
    if (!whole) Fail("cannot be written: " + ReasonOf(reason));
    temporary_.clear();
}

void AtomicFile::Fail(const std::string& what) const {
    throw ToolError(target_.string() + ": " + what);
}

}  // namespace tools
