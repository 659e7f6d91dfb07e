// SPDX-License-Identifier: MIT
#include "tools/dump/report_json.h"

#include <cstdio>

namespace tools {
namespace {

// Length of the UTF-8 sequence (RFC 3629) that begins at `at`, 0 when none does.
std::size_t Utf8Length(const std::string& text, std::size_t at) {
    const auto byte = [&](std::size_t i) -> unsigned {
        return at + i < text.size() ? static_cast<unsigned char>(text[at + i]) : 0U;
    };
    const auto continues = [&](std::size_t i) { return (byte(i) & 0xC0U) == 0x80U; };
    const unsigned lead = byte(0);
    if (lead < 0x80) return 1;
    if (lead >= 0xC2 && lead <= 0xDF && continues(1)) return 2;
    if (lead >= 0xE0 && lead <= 0xEF && continues(1) && continues(2)) {
        const bool overlong = lead == 0xE0 && byte(1) < 0xA0;
        const bool surrogate = lead == 0xED && byte(1) >= 0xA0;
        return overlong || surrogate ? 0 : 3;
    }
    if (lead >= 0xF0 && lead <= 0xF4 && continues(1) && continues(2) && continues(3)) {
        const bool overlong = lead == 0xF0 && byte(1) < 0x90;
        const bool beyond = lead == 0xF4 && byte(1) >= 0x90;
        return overlong || beyond ? 0 : 4;
    }
    return 0;
}

std::string Quoted(const std::string& text) {
    std::string out = "\"";
    for (std::size_t i = 0; i < text.size();) {
        const std::size_t length = Utf8Length(text, i);
        const auto byte = static_cast<unsigned char>(text[i]);
        if (length == 0) {
            out += "\\ufffd";
            ++i;
        } else if (byte == '"' || byte == '\\') {
            out += {'\\', text[i++]};
        } else if (byte < 0x20) {
            char escape[8];
            std::snprintf(escape, sizeof escape, "\\u%04x", byte);
            out += escape;
            ++i;
        } else {
            out.append(text, i, length);
            i += length;
        }
    }
    return out + "\"";
}

const char* EndName(MessageEnd end) {
    switch (end) {
        case MessageEnd::PartialRecord:
            return "partial-record";
        case MessageEnd::BadLength:
            return "oversized-length";
        case MessageEnd::ReadError:
            return "read-error";
        default:
            return "clean";
    }
}

const char* Truth(bool value) {
    return value ? "true" : "false";
}

std::string PictureAsJson(const PayloadFacts& picture) {
    char text[256];
    std::snprintf(text, sizeof text,
                  "{\"bytes\": %zu, \"coarse_count\": %u, \"fine_count\": %u, \"coded_blocks\": %d, "
                  "\"counts_out_of_range\": %s, \"counts_disagree\": %s, \"runs_short\": %s}",
                  picture.bytes, picture.coarse_count, picture.fine_count, picture.coded_blocks,
                  Truth(picture.counts_out_of_range), Truth(picture.counts_disagree),
                  Truth(picture.runs_short));
    return text;
}

std::string WarningsAsJson(const MessageReport& report, const char* skipped_code) {
    std::string out = "[";
    for (const Warning& warning : report.warnings) {
        const std::string code = warning.code == "skipped-bytes" ? skipped_code : warning.code;
        out += out.size() == 1 ? "\n    " : ",\n    ";
        out += "{\"code\": " + Quoted(code) + ", \"text\": " + Quoted(warning.text) + "}";
    }
    return out + (report.warnings.empty() ? "]" : "\n  ]");
}

}  // namespace

std::string ReportAsJson(const MessageReport& report) {
    char duration[32];
    char length[32];
    std::snprintf(duration, sizeof duration, "%.2f", report.announced_seconds());
    std::snprintf(length, sizeof length, "%.2f", report.length_seconds());
    std::string out = "{\n  \"file\": " + Quoted(report.path);
    out += ",\n  \"file_bytes\": " + std::to_string(report.file_bytes);
    out += std::string(",\n  \"kind\": ") + (report.rate == 0 ? "\"voice\"" : "\"video\"");
    out += ",\n  \"pictures_per_second\": " + std::to_string(report.rate);
    out += ",\n  \"frame_count\": " + std::to_string(report.frame_count);
    out += std::string(",\n  \"duration_seconds\": ") + duration;
    out += ",\n  \"speech_blocks\": " + std::to_string(report.speech_blocks);
    out += ",\n  \"speech_frames\": " + std::to_string(report.speech_frames());
    out += ",\n  \"video_records\": [";
    for (std::size_t i = 0; i < report.pictures.size(); ++i) {
        out += (i == 0 ? "\n    " : ",\n    ") + PictureAsJson(report.pictures[i]);
    }
    out += report.pictures.empty() ? "]" : "\n  ]";
    out += ",\n  \"skipped_bytes\": " + std::to_string(report.skipped_bytes);
    out += std::string(",\n  \"length_seconds\": ") + length;
    out += std::string(",\n  \"end\": \"") + EndName(report.end) + "\"";
    out += ",\n  \"end_offset\": " + std::to_string(report.end_offset);
    out += ",\n  \"warnings\": " + WarningsAsJson(report, "skipped-bytes");
    // The names of version 1.0, for one version more.
    out += ",\n  \"passed_over_bytes\": " + std::to_string(report.skipped_bytes);
    out += ",\n  \"odd\": " + WarningsAsJson(report, "passed-over");
    return out + "\n}";
}

// Strings have their line breaks escaped, so each one here is between two tokens.
std::string OnOneLine(const std::string& json) {
    std::string line;
    bool indented = false;
    for (const char letter : json) {
        if (letter == '\n') {
            indented = true;
        } else if (!indented || letter != ' ') {
            if (indented && line.back() == ',') line += ' ';
            indented = false;
            line += letter;
        }
    }
    return line;
}

std::string ErrorAsJson(const std::string& path, const std::string& error) {
    return "{\n  \"file\": " + Quoted(path) + ",\n  \"error\": " + Quoted(error) + "\n}";
}

}  // namespace tools
