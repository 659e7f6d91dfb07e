// SPDX-License-Identifier: MIT
#include "tools/dump/message_report.h"

#include <algorithm>
#include <cinttypes>
#include <cstdarg>
#include <cstdio>
#include <cstring>

namespace tools {
namespace {

constexpr std::size_t kSizesPerLine = 12;

[[gnu::format(printf, 1, 2)]] std::string Format(const char* format, ...) {
    char text[256];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    return text;
}

std::string Count(uint64_t number, const char* singular, const char* plural) {
    return std::to_string(number) + " " + (number == 1 ? singular : plural);
}

std::string VideoRecordLines(const MessageReport& report) {
    if (report.pictures.empty()) return "none";
    uint64_t total = 0;
    for (const PayloadFacts& picture : report.pictures) total += picture.bytes;
    std::string text = std::to_string(report.pictures.size()) +
                       Format(", %.0f bytes on average; sizes:",
                              static_cast<double>(total) / static_cast<double>(report.pictures.size()));
    for (std::size_t i = 0; i < report.pictures.size(); ++i) {
        text += i % kSizesPerLine == 0 ? "\n    " : " ";
        text += Format("%5zu", report.pictures[i].bytes);
    }
    return text;
}

}  // namespace

ReportBuilder::ReportBuilder(const MessageFile& message, bool keep_pictures, const TimeRange& range)
    : message_(message),
      keep_pictures_(keep_pictures),
      range_(range),
      clock_(message.rate()),
      faults_{{{"counts-out-of-range", &PayloadFacts::counts_out_of_range,
                "announces more detail than there is room for"},
               {"counts-disagree", &PayloadFacts::counts_disagree,
                "announces other counts than its skip flags ask for"},
               {"payload-short", &PayloadFacts::runs_short,
                "ends before its last code; missing values are taken as 0"}}} {
    report_.path = message.path();
    report_.file_bytes = message.file_bytes();
    report_.rate = message.rate();
    report_.frame_count = message.frame_count();
}

void ReportBuilder::Add(const MessageRecord& record) {
    switch (record.kind) {
        case MessageRecordKind::Speech: {
            ++report_.speech_blocks;
            clock_.AddSpeechBlock();
            const int64_t begin = std::max(clock_.SpeechEnd() - kFramesPerSpeechBlock, range_.from);
            const int64_t end = std::min(clock_.SpeechEnd(), range_.to);
            report_.frames_in_range += static_cast<uint64_t>(std::max<int64_t>(end - begin, 0));
            break;
        }
        case MessageRecordKind::Video:
            AddPicture(inspector_.Inspect(record.body));
            clock_.AddPicture();
            break;
        case MessageRecordKind::Skipped:
            break;
        case MessageRecordKind::End:
            End(record);
            break;
    }
}

void ReportBuilder::AddPicture(const PayloadFacts& facts) {
    ++report_.picture_count;
    if (keep_pictures_) report_.pictures.push_back(facts);
    for (Fault& fault : faults_) {
        if (facts.*fault.found && fault.count++ == 0) fault.first = report_.picture_count;
    }
}

void ReportBuilder::End(const MessageRecord& last) {
    report_.end = last.end;
    report_.end_offset = message_.Offset();
    // A pipe's size is known when it has been read.
    if (report_.file_bytes == 0) report_.file_bytes = static_cast<uint64_t>(message_.Offset());
    report_.length = clock_.Length();
    report_.skipped_bytes = message_.skipped_bytes();
    AddEndWarning(last);
    AddWarnings();
}

void ReportBuilder::AddEndWarning(const MessageRecord& last) {
    const std::string place =
        Format(" at %.2f s, byte %" PRId64, report_.length_seconds(), report_.end_offset);
    switch (last.end) {
        case MessageEnd::None:
        case MessageEnd::Clean:
            break;
        case MessageEnd::PartialRecord:
            report_.warnings.push_back({"partial-record", "the file ends within a record" + place +
                                                              "; what is there of it is dropped"});
            break;
        case MessageEnd::BadLength:
            report_.warnings.push_back(
                {"oversized-length", Format("a video record claims %u bytes, more than %zu,",
                                            last.declared_bytes, kMaxPayloadBytes) +
                                         place + "; the message ends there"});
            break;
        case MessageEnd::ReadError:
            report_.warnings.push_back(
                {"read-error", "the file cannot be read on" + place + ": " + std::strerror(last.error)});
            break;
    }
}

void ReportBuilder::AddWarnings() {
    if (report_.frame_count != report_.speech_frames()) {
        report_.warnings.push_back(
            {"frame-count", Format("the frame count is %u, the records hold %s", report_.frame_count,
                                   Count(report_.speech_frames(), "speech frame", "speech frames").c_str())});
    }
    if (report_.skipped_bytes > 0) {
        report_.warnings.push_back({"skipped-bytes", Count(report_.skipped_bytes, "byte was", "bytes were") +
                                                         " skipped between records"});
    }
    if (report_.rate == 0 && report_.picture_count > 0) {
        report_.warnings.push_back(
            {"pictures-in-voice", "a voice-only message holds video records; they are not shown"});
    }
    if (report_.rate > 0 && report_.picture_count == 0) {
        report_.warnings.push_back({"no-pictures", "a video message holds no video record"});
    }
    for (const Fault& fault : faults_) {
        if (fault.count == 0) continue;
        const std::string which =
            fault.count == 1 ? Format("picture %" PRIu64, fault.first)
                             : Format("%s, the first being picture %" PRIu64 ",",
                                      Count(fault.count, "picture", "pictures").c_str(), fault.first);
        report_.warnings.push_back({fault.code, which + " " + fault.what});
    }
}

MessageReport ReportOn(MessageFile& message, bool keep_pictures, const TimeRange& range,
                       const std::function<void(double)>& watch) {
    ReportBuilder builder(message, keep_pictures, range);
    MessageRecord record;
    do {
        watch(message.ReadShare());
        record = message.Read();
        builder.Add(record);
    } while (record.kind != MessageRecordKind::End);
    watch(1);
    return builder.report();
}

std::string ReportAsText(const MessageReport& report) {
    std::string text = report.path + ": ";
    text += report.rate == 0
                ? "voice-only message"
                : "video message, " + Count(static_cast<uint64_t>(report.rate), "picture", "pictures") +
                      " per second";
    text += Format("\n  file           %s", Count(report.file_bytes, "byte", "bytes").c_str());
    text += Format("\n  frame count    %u (%.2f s)", report.frame_count, report.announced_seconds());
    text += Format("\n  length         %.2f s", report.length_seconds());
    text += "\n  speech         " + Count(report.speech_blocks, "block", "blocks") + ", " +
            Count(report.speech_frames(), "frame", "frames");
    text += "\n  video records  " + VideoRecordLines(report);
    text += "\n  skipped        " + Count(report.skipped_bytes, "byte", "bytes");
    if (report.warnings.empty()) text += "\n  warnings       none";
    for (const Warning& warning : report.warnings) text += "\n  warning        " + warning.text;
    return text + "\n";
}

}  // namespace tools
