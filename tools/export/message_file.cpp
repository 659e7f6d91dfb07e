// SPDX-License-Identifier: MIT
#include "tools/export/message_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "tools/tool_error.h"

namespace tools {
namespace {

constexpr std::size_t kStreamBuffer = std::size_t{1} << 16;

}  // namespace

MessageFile::MessageFile(const std::string& path, Kind kind)
    : path_(path == "-" ? "standard input" : path),
      stream_(path == "-"         ? stdin
              : kind == Kind::Any ? std::fopen(path.c_str(), "rbe")
                                  : OpenRegular()) {
    if (!stream_) Fail(std::string("cannot be opened: ") + std::strerror(errno));
    struct stat status {};
    if (fstat(fileno(stream_.get()), &status) == 0) {
        if (S_ISDIR(status.st_mode)) Fail("is a directory");
        file_bytes_ = static_cast<uint64_t>(status.st_size);
        can_rewind_ = S_ISREG(status.st_mode) && std::ftell(stream_.get()) == 0;
    }
    std::setvbuf(stream_.get(), nullptr, _IOFBF, kStreamBuffer);
    CheckHeader();
}

// What the path names is asked of what was opened, which cannot be exchanged any more; without O_NONBLOCK a
// pipe would wait for its writer.
std::FILE* MessageFile::OpenRegular() const {
    const int descriptor = open(path_.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (descriptor < 0) return nullptr;
    struct stat status {};
    if (fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode)) return fdopen(descriptor, "rb");
    close(descriptor);
    Fail(S_ISDIR(status.st_mode) ? "is a directory" : "is no regular file");
}

void MessageFile::CheckHeader() {
    uint8_t video_rate = 0;
    MessageHeaderError error = ReadMessageKind(stream_.get(), video_rate);
    if (error == MessageHeaderError::None) error = ReadMessageFrameCount(stream_.get(), frame_count_);
    if (std::ferror(stream_.get()) != 0) Fail("cannot be read");
    switch (error) {
        case MessageHeaderError::None:
            rate_ = video_rate;
            return;
        case MessageHeaderError::BadMagic:
            Fail("is no message: does not begin with TRV01.01");
        case MessageHeaderError::NoVideoRate:
            Fail("is no message: ends before the video rate");
        case MessageHeaderError::BadVideoRate:
            Fail("is no message: video rate " + std::to_string(video_rate) + " is out of range (0 to 5)");
        case MessageHeaderError::NoFrameCount:
            Fail("is no message: ends before the frame count is complete");
    }
}

MessageRecord MessageFile::Read() {
    const MessageRecord record = reader_.Read(stream_.get());
    if (observer_) observer_(record);
    return record;
}

void MessageFile::Rewind() {
    if (!reader_.Rewind(stream_.get())) Fail("cannot be read twice, as it is no regular file");
}

double MessageFile::ReadShare() const {
    if (file_bytes_ == 0) return 0;
    return static_cast<double>(std::ftell(stream_.get())) / static_cast<double>(file_bytes_);
}

void MessageFile::Fail(const std::string& what) const {
    throw ToolError(path_ + ": " + what);
}

}  // namespace tools
