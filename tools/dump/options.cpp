// SPDX-License-Identifier: MIT
#include "tools/dump/options.h"

#include <getopt.h>

#include <array>
#include <charconv>
#include <cstring>

#include "tools/tool_error.h"

namespace tools {

const char* const kDumpHelp =
    R"(Usage: trvdump [OPTIONS] MESSAGE...

Tells what is in Trivelle messages (.trv), or turns one into sound and pictures, decoded
as the player does it. Without options it prints a summary of each message.

      --json        the summary for programs: a JSON object, or an array of them when
                    more than one MESSAGE is given; a file that is no message has
                    the members "file" and "error"
      --wav FILE    write the speech as a WAV file (8000 Hz, mono, 16 bit)
      --pcm FILE    write the speech as raw samples (signed, 16 bit, little-endian)
      --png DIR     write the pictures as DIR/picture-0001.png and so on
      --bgr DIR     write the decoder's bytes as DIR/picture-0001.bgr and so on: rows of
                    320 times B, G, R, the bottom row first, 230400 bytes
      --quality N   decode pictures at level 0 to 3 (default 3, as players do)
      --thumbnail FILE  write one small picture of the message (PNG): the first that is
                    not nearly one colour, or for speech alone its levels
      --size N      longer side of the thumbnail, 16 to 1024 pixels (default 256)
  -h, --help        print this and end
      --version     print the version and end

FILE may be - for standard output. Folders are made where they are missing. Writing
takes one MESSAGE and prints no summary (ask for it with --json); warnings about the
message go to standard error. Pictures of a voice-only message are not decoded.

Exit status: 0 on success, 1 when a file is no message or something cannot be written,
2 for wrong usage.
)";

namespace {

enum LongOption { kJson = 256, kWav, kPcm, kPng, kBgr, kQuality, kThumbnail, kSize, kVersion };

constexpr std::array<option, 11> kLongOptions = {{
    {"json", no_argument, nullptr, kJson},
    {"wav", required_argument, nullptr, kWav},
    {"pcm", required_argument, nullptr, kPcm},
    {"png", required_argument, nullptr, kPng},
    {"bgr", required_argument, nullptr, kBgr},
    {"quality", required_argument, nullptr, kQuality},
    {"thumbnail", required_argument, nullptr, kThumbnail},
    {"size", required_argument, nullptr, kSize},
    {"help", no_argument, nullptr, 'h'},
    {"version", no_argument, nullptr, kVersion},
    {nullptr, 0, nullptr, 0},
}};

int ParseQuality(const char* text) {
    if (std::strlen(text) != 1 || *text < '0' || *text > '3') {
        throw UsageError(std::string("--quality takes a number from 0 to 3, not '") + text + "'");
    }
    return *text - '0';
}

int ParseSize(const char* text) {
    int size = 0;
    const char* const end = text + std::strlen(text);
    const auto [stopped, error] = std::from_chars(text, end, size);
    if (error != std::errc{} || stopped != end || size < 16 || size > 1024) {
        throw UsageError(std::string("--size takes a number from 16 to 1024, not '") + text + "'");
    }
    return size;
}

void Check(const DumpOptions& options) {
    if (options.messages.empty()) throw UsageError("no message given");
    if (options.Writes() && options.messages.size() > 1) throw UsageError("writing takes one message");
    const int to_standard_output =
        (options.wav == "-" ? 1 : 0) + (options.pcm == "-" ? 1 : 0) + (options.json ? 1 : 0);
    const bool sound_goes_there = options.wav == "-" || options.pcm == "-";
    if (sound_goes_there && to_standard_output > 1) throw UsageError("standard output takes one thing only");
    if (options.wav && options.wav == options.pcm) throw UsageError("--wav and --pcm name the same file");
    if (options.thumbnail && (options.Writes() || options.json)) {
        throw UsageError("--thumbnail is written alone");
    }
    if (options.thumbnail && options.messages.size() > 1) throw UsageError("writing takes one message");
    if (options.thumbnail_size && !options.thumbnail) throw UsageError("--size needs --thumbnail");
}

}  // namespace

DumpOptions ParseDumpOptions(int argc, char** argv) {
    DumpOptions options;
    opterr = 0;
    int found = 0;
    while ((found = getopt_long(argc, argv, ":h", kLongOptions.data(), nullptr)) != -1) {
        switch (found) {
            case kJson:
                options.json = true;
                break;
            case kWav:
                options.wav = optarg;
                break;
            case kPcm:
                options.pcm = optarg;
                break;
            case kPng:
                options.png = optarg;
                break;
            case kBgr:
                options.bgr = optarg;
                break;
            case kQuality:
                options.quality = ParseQuality(optarg);
                break;
            case kThumbnail:
                options.thumbnail = optarg;
                break;
            case kSize:
                options.thumbnail_size = ParseSize(optarg);
                break;
            case 'h':
                options.help = true;
                return options;
            case kVersion:
                options.version = true;
                return options;
            case ':':
                throw UsageError(std::string(argv[optind - 1]) + " needs a value");
            default:
                throw UsageError(std::string("unknown or unclear option '") + argv[optind - 1] + "'");
        }
    }
    options.messages.assign(argv + optind, argv + argc);
    Check(options);
    return options;
}

}  // namespace tools
