// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "codec/message_reader.h"
#include "codec/message_time.h"
#include "tools/dump/message_file.h"
#include "tools/dump/payload_facts.h"

namespace tools {

// Something about a message that a writer of messages should not have made.
struct Warning {
    std::string code;  // for programs; never changes
    std::string text;  // for people
};

// What is in a message, record by record.
struct MessageReport {
    std::string path;
    uint64_t file_bytes = 0;
    int rate = 0;
    uint32_t frame_count = 0;
    uint64_t speech_blocks = 0;
    std::vector<PayloadFacts> pictures;
    uint64_t skipped_bytes = 0;
    MessageEnd end = MessageEnd::Clean;
    int64_t end_offset = 0;  // of the record that brought the end, or the file's length
    int64_t length = 0;      // until there, in frames of 20 ms, pictures included
    std::vector<Warning> warnings;

    uint64_t speech_frames() const { return speech_blocks * kFramesPerSpeechBlock; }
    // Length in seconds that the header announces, and that the records have.
    double announced_seconds() const { return Seconds(frame_count); }
    double length_seconds() const { return Seconds(length); }

private:
    static double Seconds(int64_t frames) { return static_cast<double>(frames * kFrameMilliseconds) / 1000; }
};

// Reads all records of a message that stands at its first record, through the player's own reader.
MessageReport ReportOn(MessageFile& message);

// The report for people to read.
std::string ReportAsText(const MessageReport& report);

}  // namespace tools
