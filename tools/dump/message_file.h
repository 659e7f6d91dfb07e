// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>

#include "codec/message_reader.h"

namespace tools {

// A message opened from a file, its header checked, standing at its first record.
class MessageFile {
public:
    // Throws ToolError when the file cannot be opened or is no message.
    explicit MessageFile(const std::string& path);

    // The next record, exactly as the player reads it.
    MessageRecord Read() { return reader_.Read(stream_.get()); }
    // Back to the first record. Throws ToolError for a stream that cannot go back.
    void Rewind();

    // How much of the file has been read, 0 to 1; 0 when its size is not known.
    double ReadShare() const;

    const std::string& path() const { return path_; }
    uint64_t file_bytes() const { return file_bytes_; }
    int rate() const { return rate_; }
    uint32_t frame_count() const { return frame_count_; }
    // Of the next record, or of the one that brought the end.
    int64_t Offset() const { return reader_.Offset(); }
    uint64_t skipped_bytes() const { return reader_.SkippedBytes(); }

private:
    struct Close {
        void operator()(std::FILE* stream) const { std::fclose(stream); }
    };

    [[noreturn]] void Fail(const std::string& what) const;
    void CheckHeader();

    std::string path_;
    std::unique_ptr<std::FILE, Close> stream_;
    MessageReader reader_;
    uint64_t file_bytes_ = 0;
    int rate_ = 0;
    uint32_t frame_count_ = 0;
};

}  // namespace tools
