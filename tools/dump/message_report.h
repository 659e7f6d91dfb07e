// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "codec/message_reader.h"
#include "codec/message_time.h"
#include "tools/dump/payload_facts.h"
#include "tools/export/message_file.h"
#include "tools/export/time_range.h"

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
    uint64_t picture_count = 0;
    std::vector<PayloadFacts> pictures;  // where they are kept
    uint64_t skipped_bytes = 0;
    MessageEnd end = MessageEnd::Clean;
    int64_t end_offset = 0;  // of the record that brought the end, or the file's length
    int64_t length = 0;      // until there, in frames of 20 ms, pictures included
    std::vector<Warning> warnings;
    uint64_t frames_in_range = 0;  // of speech

    uint64_t speech_frames() const { return speech_blocks * kFramesPerSpeechBlock; }
    // Length in seconds that the header announces, and that the records have.
    double announced_seconds() const { return Seconds(frame_count); }
    double length_seconds() const { return Seconds(length); }

private:
    static double Seconds(int64_t frames) { return static_cast<double>(frames * kFrameMilliseconds) / 1000; }
};

// Puts a report together from a message's records, in their order.
class ReportBuilder {
public:
    // `message` outlives this. `keep_pictures`: the facts of each picture go into the report; else what is
    // kept does not grow with the message. Throws std::bad_alloc.
    ReportBuilder(const MessageFile& message, bool keep_pictures, const TimeRange& range);

    void Add(const MessageRecord& record);
    // After the record that is the end.
    const MessageReport& report() const { return report_; }

private:
    // A fault that pictures share, told in one line for all of them.
    struct Fault {
        const char* code;
        bool PayloadFacts::*found;
        const char* what;
        uint64_t count = 0;
        uint64_t first = 0;  // from 1
    };

    void AddPicture(const PayloadFacts& facts);
    void End(const MessageRecord& last);
    void AddEndWarning(const MessageRecord& last);
    void AddWarnings();

    const MessageFile& message_;
    bool keep_pictures_;
    TimeRange range_;
    PayloadInspector inspector_;
    MessageClock clock_;
    std::array<Fault, 3> faults_;
    MessageReport report_;
};

// Reads all records of a message that stands at its first record, through the player's own reader. `watch` is
// told how much is done, 0 to 1; what it throws ends the reading.
MessageReport ReportOn(MessageFile& message, bool keep_pictures, const TimeRange& range,
                       const std::function<void(double)>& watch);

// The report for people to read.
std::string ReportAsText(const MessageReport& report);

}  // namespace tools
