// SPDX-License-Identifier: MIT
#include "tools/dump/dump_options.h"

#include <getopt.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>
#include <set>

#include "tools/tool_error.h"

namespace tools {

const char* const kDumpHelp =
    R"(Usage: trvdump [OPTIONS] MESSAGE...

Tells what is in Trivelle messages (.trv), or turns them into films, sound and pictures,
decoded as the player does it. Without options it prints a summary of each message.

      --json        the summary for programs: a JSON object, or an array of them when
                    more than one MESSAGE is given; a file that is no message has
                    the members "file" and "error"
      --json-lines  the same, one line for each MESSAGE
      --video FILE  write a film as the player plays it: .mp4, .webm or .mkv (lossless)
                    with sound, .gif or .webp pictures alone; a voice-only message
                    becomes a film of its trace. Needs the program ffmpeg
      --audio FILE  write the sound as the player plays it: .wav, .flac, .opus, .ogg
                    or .mp3
      --wav FILE    write the speech as a WAV file (8000 Hz, mono, 16 bit)
      --pcm FILE    write the speech as raw samples (signed, 16 bit, little-endian)
      --png DIR     write the pictures as DIR/picture-0001.png and so on
      --bgr DIR     write the decoder's bytes as DIR/picture-0001.bgr and so on: rows of
                    320 times B, G, R, the bottom row first, 230400 bytes
      --format END  the form of --video or --audio where FILE's ending does not tell it
      --from TIME   begin there: h:mm:ss.cc, hours, minutes and the fraction at will
      --to TIME     end there; both are exact to 20 ms
      --quality N   decode pictures at level 0 to 3 (default 3, as players do)
      --force       replace files that are there already
      --jobs N      so many messages at the same time (default: one for each processor)
      --thumbnail FILE  write one small picture of the message (PNG): the first that is
                    not nearly one colour, or for speech alone its levels
      --size N      longer side of the thumbnail, 16 to 1024 pixels (default 256)
  -h, --help        print this and end
      --version     print the version and end

MESSAGE may be - for standard input, FILE - for standard output. {} in FILE or DIR stands
for the message's name without folder and .trv; with more than one MESSAGE each output
has to have it. Folders for pictures are made where they are missing. A file appears when
it is whole; one that is there already is replaced by --force, or when the same command
made it. Writing prints no summary (ask for it with --json or --json-lines); warnings
about the message go to standard error. Pictures of a voice-only message are not decoded.

Exit status: 0 on success, 1 when a file is no message or something cannot be written
(the other messages are treated all the same), 2 for wrong usage.
)";

namespace {

enum LongOption {
    kJson = 256,
    kJsonLines,
    kVideo,
    kAudio,
    kWav,
    kPcm,
    kPng,
    kBgr,
    kFormat,
    kFrom,
    kTo,
    kQuality,
    kForce,
    kJobs,
    kThumbnail,
    kSize,
    kVersion
};

constexpr std::array<option, 19> kLongOptions = {{
    {"json", no_argument, nullptr, kJson},
    {"json-lines", no_argument, nullptr, kJsonLines},
    {"video", required_argument, nullptr, kVideo},
    {"audio", required_argument, nullptr, kAudio},
    {"wav", required_argument, nullptr, kWav},
    {"pcm", required_argument, nullptr, kPcm},
    {"png", required_argument, nullptr, kPng},
    {"bgr", required_argument, nullptr, kBgr},
    {"format", required_argument, nullptr, kFormat},
    {"from", required_argument, nullptr, kFrom},
    {"to", required_argument, nullptr, kTo},
    {"quality", required_argument, nullptr, kQuality},
    {"force", no_argument, nullptr, kForce},
    {"jobs", required_argument, nullptr, kJobs},
    {"thumbnail", required_argument, nullptr, kThumbnail},
    {"size", required_argument, nullptr, kSize},
    {"help", no_argument, nullptr, 'h'},
    {"version", no_argument, nullptr, kVersion},
    {nullptr, 0, nullptr, 0},
}};

int ParseNumber(const char* name, const char* text, int lowest, int highest) {
    int number = 0;
    const char* const end = text + std::strlen(text);
    const auto [stopped, error] = std::from_chars(text, end, number);
    if (error != std::errc{} || stopped != end || number < lowest || number > highest) {
        throw UsageError(std::string(name) + " takes a number from " + std::to_string(lowest) + " to " +
                         std::to_string(highest) + ", not '" + text + "'");
    }
    return number;
}

int64_t ParsePlace(const char* name, const char* text) {
    const auto place = ParseTime(text);
    if (!place) throw UsageError(std::string(name) + " takes a time like 1:02:03.45, not '" + text + "'");
    return *place;
}

// By the name's ending, or else by --format.
const SaveForm* FormOf(const char* name, const std::optional<std::string>& output, const std::string& format,
                       bool with_pictures) {
    if (!output) return nullptr;
    const SaveForm* const form = FindSaveForm(format.empty() ? EndingOf(*output) : format);
    if (form != nullptr && form->HasPictures() == with_pictures) return form;
    std::string known;
    for (const SaveForm& possible : SaveForms()) {
        if (possible.HasPictures() == with_pictures) known += std::string(" .") + possible.ending;
    }
    throw UsageError(std::string(name) + " writes" + known + "; --format names one where '" + *output +
                     "' does not");
}

void CheckNames(const DumpOptions& options) {
    const std::optional<std::string>* const outputs[] = {&options.wav,   &options.pcm, &options.audio,
                                                         &options.video, &options.png, &options.bgr};
    std::set<std::string> files;
    std::size_t named = 0;
    for (const auto* output : outputs) {
        for (const std::string& message : options.messages) {
            if (!*output) continue;
            const bool folder = output == &options.png || output == &options.bgr;
            files.insert(OutputName(**output, message) + (folder ? "/" : ""));
            ++named;
        }
    }
    if (options.png && options.png == options.bgr) named -= options.messages.size();
    if (files.size() == named) return;
    throw UsageError(
        options.messages.size() > 1
            ? "two messages would be written to the same place: {} in it stands for a message's name"
            : "two outputs name the same file");
}

void Check(const DumpOptions& options) {
    if (options.messages.empty()) throw UsageError("no message given");
    if (std::count(options.messages.begin(), options.messages.end(), "-") > 1)
        throw UsageError("standard input holds one message");
    int printed = options.AsJson() ? 1 : 0;
    for (const auto* output : {&options.wav, &options.pcm, &options.audio, &options.video})
        printed += *output == "-" ? 1 : 0;
    if (printed > 1) throw UsageError("standard output takes one thing only");
    if (options.json && options.json_lines) throw UsageError("--json and --json-lines exclude each other");
    if (options.range.from >= options.range.to) throw UsageError("--from has to be before --to");
    if (!options.range.IsWhole() && !options.Writes())
        throw UsageError("--from and --to need something to write");
    if (options.thumbnail && (options.Writes() || options.AsJson())) {
        throw UsageError("--thumbnail is written alone");
    }
    if (options.thumbnail && options.messages.size() > 1) throw UsageError("--thumbnail takes one message");
    if (options.thumbnail_size && !options.thumbnail) throw UsageError("--size needs --thumbnail");
    CheckNames(options);
}

}  // namespace

DumpOptions ParseDumpOptions(int argc, char** argv) {
    DumpOptions options;
    std::string format;
    opterr = 0;
    int found = 0;
    while ((found = getopt_long(argc, argv, ":h", kLongOptions.data(), nullptr)) != -1) {
        switch (found) {
            case kJson:
                options.json = true;
                break;
            case kJsonLines:
                options.json_lines = true;
                break;
            case kVideo:
                options.video = optarg;
                break;
            case kAudio:
                options.audio = optarg;
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
            case kFormat:
                format = optarg;
                break;
            case kFrom:
                options.range.from = ParsePlace("--from", optarg);
                break;
            case kTo:
                options.range.to = ParsePlace("--to", optarg);
                break;
            case kQuality:
                options.quality = ParseNumber("--quality", optarg, 0, 3);
                break;
            case kForce:
                options.force = true;
                break;
            case kJobs:
                options.jobs = static_cast<unsigned>(ParseNumber("--jobs", optarg, 1, 1024));
                break;
            case kThumbnail:
                options.thumbnail = optarg;
                break;
            case kSize:
                options.thumbnail_size = ParseNumber("--size", optarg, 16, 1024);
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
    if (!format.empty() && !options.audio && !options.video)
        throw UsageError("--format needs --video or --audio");
    if (!format.empty() && options.audio && options.video)
        throw UsageError("--format takes one of --video and --audio");
    options.audio_form = FormOf("--audio", options.audio, format, false);
    options.video_form = FormOf("--video", options.video, format, true);
    Check(options);
    return options;
}

std::string OutputName(const std::string& pattern, const std::string& message) {
    std::string name = message == "-" ? "message" : message.substr(message.rfind('/') + 1);
    if (name.size() > 4 && name.ends_with(".trv")) name.resize(name.size() - 4);
    std::string output;
    std::size_t from = 0;
    for (std::size_t at = 0; (at = pattern.find("{}", from)) != std::string::npos; from = at + 2)
        output += pattern.substr(from, at - from) + name;
    return output + pattern.substr(from);
}

}  // namespace tools
