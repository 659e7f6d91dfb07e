// SPDX-License-Identifier: MIT
#include "tools/dump/message_report.h"

#include <algorithm>
#include <cinttypes>
#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "tools/progress.h"

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

void AddEndWarning(const MessageRecord& last, MessageReport& report) {
    const std::string place = Format(" at %.2f s, byte %" PRId64, report.length_seconds(), report.end_offset);
    switch (last.end) {
        case MessageEnd::None:
        case MessageEnd::Clean:
            break;
        case MessageEnd::PartialRecord:
            report.warnings.push_back({"partial-record", "the file ends within a record" + place +
                                                             "; what is there of it is dropped"});
            break;
        case MessageEnd::BadLength:
            report.warnings.push_back(
                {"oversized-length", Format("a video record claims %u bytes, more than %zu,",
                                            last.declared_bytes, kMaxPayloadBytes) +
                                         place + "; the message ends there"});
            break;
        case MessageEnd::ReadError:
            report.warnings.push_back(
                {"read-error", "the file cannot be read on" + place + ": " + std::strerror(last.error)});
            break;
    }
}

// One line for all pictures that share a fault.
void AddPictureWarning(MessageReport& report, const char* code, bool PayloadFacts::*fault, const char* what) {
    uint64_t count = 0;
    std::size_t first = 0;
    for (std::size_t i = 0; i < report.pictures.size(); ++i) {
        if (!(report.pictures[i].*fault)) continue;
        if (count++ == 0) first = i + 1;
    }
    if (count == 0) return;
    const std::string which = count == 1 ? Format("picture %zu", first)
                                         : Format("%s, the first being picture %zu,",
                                                  Count(count, "picture", "pictures").c_str(), first);
    report.warnings.push_back({code, which + " " + what});
}

void AddWarnings(MessageReport& report) {
    if (report.frame_count != report.speech_frames()) {
        report.warnings.push_back(
            {"frame-count", Format("the frame count is %u, the records hold %s", report.frame_count,
                                   Count(report.speech_frames(), "speech frame", "speech frames").c_str())});
    }
    if (report.skipped_bytes > 0) {
        report.warnings.push_back({"skipped-bytes", Count(report.skipped_bytes, "byte was", "bytes were") +
                                                        " skipped between records"});
    }
    if (report.rate == 0 && !report.pictures.empty()) {
        report.warnings.push_back(
            {"pictures-in-voice", "a voice-only message holds video records; they are not shown"});
    }
    if (report.rate > 0 && report.pictures.empty()) {
        report.warnings.push_back({"no-pictures", "a video message holds no video record"});
    }
    AddPictureWarning(report, "counts-out-of-range", &PayloadFacts::counts_out_of_range,
                      "announces more detail than there is room for");
    AddPictureWarning(report, "counts-disagree", &PayloadFacts::counts_disagree,
                      "announces other counts than its skip flags ask for");
    AddPictureWarning(report, "payload-short", &PayloadFacts::runs_short,
                      "ends before its last code; missing values are taken as 0");
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

MessageReport ReportOn(MessageFile& message) {
    MessageReport report;
    report.path = message.path();
    report.file_bytes = message.file_bytes();
    report.rate = message.rate();
    report.frame_count = message.frame_count();
    const PayloadInspector inspector;
    MessageClock clock(report.rate);
    Progress progress("trvdump: " + message.path());
    while (true) {
        const MessageRecord record = message.Read();
        progress.Show(message.ReadShare());
        if (record.kind == MessageRecordKind::Speech) {
            ++report.speech_blocks;
            clock.AddSpeechBlock();
        } else if (record.kind == MessageRecordKind::Video) {
            report.pictures.push_back(inspector.Inspect(record.body));
            clock.AddPicture();
        } else if (record.kind == MessageRecordKind::End) {
            report.end = record.end;
            report.end_offset = message.Offset();
            report.length = clock.Length();
            AddEndWarning(record, report);
            break;
        }
    }
    report.skipped_bytes = message.skipped_bytes();
    AddWarnings(report);
    return report;
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
