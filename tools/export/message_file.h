// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <cstdio>
#include <functional>
#include <memory>
#include <string>
#include <utility>

#include "codec/message_reader.h"

namespace tools {

// A message opened from a file, its header checked, standing at its first record.
class MessageFile {
public:
    // Any: also a pipe or a device, which may keep its reader waiting.
    enum class Kind { Any, Regular };

    // `path` "-" is standard input. Throws ToolError when the file cannot be opened or is no message.
    explicit MessageFile(const std::string& path, Kind kind = Kind::Any);

    // The next record, exactly as the player reads it.
    MessageRecord Read();
    // Whether Rewind is possible: not with a pipe.
    bool CanRewind() const { return can_rewind_; }
    // Back to the first record. Throws ToolError for a stream that cannot go back.
    void Rewind();
    // Called with each record that Read returns, until it is replaced.
    void Observe(std::function<void(const MessageRecord&)> observer) { observer_ = std::move(observer); }

    // How much of the file has been read, 0 to 1; 0 when its size is not known.
    double ReadShare() const;

    const std::string& path() const { return path_; }
    int descriptor() const { return fileno(stream_.get()); }
    uint64_t file_bytes() const { return file_bytes_; }
    int rate() const { return rate_; }
    uint32_t frame_count() const { return frame_count_; }
    // Of the next record, or of the one that brought the end.
    int64_t Offset() const { return reader_.Offset(); }
    uint64_t skipped_bytes() const { return reader_.SkippedBytes(); }

private:
    struct Close {
        void operator()(std::FILE* stream) const {
            if (stream != stdin) std::fclose(stream);
        }
    };

    [[noreturn]] void Fail(const std::string& what) const;
    std::FILE* OpenRegular() const;
    void CheckHeader();

    std::string path_;
    std::unique_ptr<std::FILE, Close> stream_;
    MessageReader reader_;
    std::function<void(const MessageRecord&)> observer_;
    bool can_rewind_ = false;
    uint64_t file_bytes_ = 0;
    int rate_ = 0;
    uint32_t frame_count_ = 0;
};

}  // namespace tools
