// SPDX-License-Identifier: MIT
#include "tools/make/make_options.h"

#include <charconv>
#include <optional>

#include "codec/message_format.h"
#include "tools/tool_error.h"

namespace tools {

const char* const kMakeHelp =
    R"(Usage: trvmake --sound FILE [--pictures FILE... --rate N] [--quality N] [-o] MESSAGE
       trvmake --input FILE [--rate N] [--quality N] [-o] MESSAGE

Writes a Trivelle message (.trv) from a sound file and, for a video message, from pictures;
or from a film.

  -i, --input FILE        a film or a sound file of any format that the program ffmpeg
                          reads; a film's pictures are taken at the message's rate
  -s, --sound FILE        the speech: WAV, FLAC, Ogg, MP3 and other formats, at any rate;
                          channels are mixed, the result is 8000 samples per second
  -p, --pictures FILE...  pictures in any common image format, each scaled to fit
                          320 x 240 and centred on black; the list ends at the next
                          option or at --
  -r, --rate N            pictures per second, 1 to 5 (default 3 when there are pictures)
  -q, --quality N         0 (smallest) to 3 (best, default); players show messages as
                          quality 3, so other levels are for experiments
  -o, --output MESSAGE    the message to write; may also stand alone, and is then also
                          taken from the end of a list of pictures when it ends in .trv
  -h, --help              print this and end
      --version           print the version and end

The pictures are seen once, in the order given, each for its part of a second, the first
after the first such part; the last one stays until the sound ends. When the pictures need
longer than the sound, it is continued with silence. MESSAGE is replaced only once the new one is complete.

Exit status: 0 when the message was written, 1 when it could not be, 2 for wrong usage.
)";

namespace {

constexpr int kDefaultRate = 3;
constexpr int kHighestQuality = 3;
constexpr const char* kMessageExtension = ".trv";

int ParseNumber(const std::string& option, const std::string& text, int lowest, int highest) {
    int value = 0;
    const char* const end = text.data() + text.size();
    const auto [stopped, error] = std::from_chars(text.data(), end, value);
    if (error != std::errc{} || stopped != end || value < lowest || value > highest) {
        throw UsageError(option + " takes a number from " + std::to_string(lowest) + " to " +
                         std::to_string(highest) + ", not '" + text + "'");
    }
    return value;
}

bool IsOption(const std::string& argument) {
    return argument.size() > 1 && argument.front() == '-';
}

class Parser {
public:
    explicit Parser(const std::vector<std::string>& arguments) : arguments_(arguments) {}

    MakeOptions Parse() {
        while (next_ < arguments_.size() && !options_.help && !options_.version) {
            const std::string& argument = arguments_[next_++];
            if (argument == "--") {
                while (next_ < arguments_.size()) TakeMessage(arguments_[next_++]);
            } else if (IsOption(argument)) {
                TakeOption(argument);
            } else {
                TakeMessage(argument);
            }
        }
        if (!options_.help && !options_.version) Complete();
        return options_;
    }

private:
    void TakeOption(const std::string& argument) {
        std::string name = argument;
        inline_value_.reset();
        if (const auto equals = argument.find('=');
            argument.starts_with("--") && equals != std::string::npos) {
            name = argument.substr(0, equals);
            inline_value_ = argument.substr(equals + 1);
        }
        if (name == "-h" || name == "--help") {
            options_.help = true;
        } else if (name == "--version") {
            options_.version = true;
        } else if (name == "-i" || name == "--input") {
            if (!options_.input.empty()) throw UsageError("one input is enough");
            options_.input = Value(name);
        } else if (name == "-s" || name == "--sound") {
            if (!options_.sound.empty()) throw UsageError("one sound file is enough");
            options_.sound = Value(name);
        } else if (name == "-p" || name == "--pictures") {
            TakePictures(name);
        } else if (name == "-r" || name == "--rate") {
            rate_ = ParseNumber(name, Value(name), 1, kMaxVideoRate);
        } else if (name == "-q" || name == "--quality") {
            options_.quality = ParseNumber(name, Value(name), 0, kHighestQuality);
        } else if (name == "-o" || name == "--output") {
            TakeMessage(Value(name));
        } else {
            throw UsageError("unknown option '" + name + "'");
        }
    }

    std::string Value(const std::string& name) {
        if (inline_value_) return *inline_value_;
        if (next_ == arguments_.size()) throw UsageError(name + " needs a value");
        return arguments_[next_++];
    }

    void TakePictures(const std::string& name) {
        options_.pictures.push_back(Value(name));
        while (next_ < arguments_.size() && !IsOption(arguments_[next_])) {
            options_.pictures.push_back(arguments_[next_++]);
        }
    }

    void TakeMessage(const std::string& path) {
        if (!options_.message.empty()) throw UsageError("more than one message to write: '" + path + "'");
        options_.message = path;
    }

    void Complete() {
        if (options_.message.empty() && !options_.pictures.empty() &&
            options_.pictures.back().ends_with(kMessageExtension)) {
            options_.message = options_.pictures.back();
            options_.pictures.pop_back();
        }
        const bool parts = !options_.sound.empty() || !options_.pictures.empty();
        if (!options_.input.empty() && parts) throw UsageError("--input stands for --sound and --pictures");
        if (options_.input.empty() && options_.sound.empty())
            throw UsageError("no sound file (--sound FILE) and no film (--input FILE)");
        if (options_.message.empty()) throw UsageError("no message to write");
        options_.rate_asked = rate_.has_value();
        if (!options_.input.empty()) {
            options_.rate = rate_.value_or(kDefaultRate);
            return;
        }
        if (rate_ && options_.pictures.empty()) throw UsageError("--rate needs --pictures");
        if (!options_.pictures.empty()) options_.rate = rate_.value_or(kDefaultRate);
    }

    const std::vector<std::string>& arguments_;
    std::size_t next_ = 0;
    std::optional<std::string> inline_value_;
    std::optional<int> rate_;
    MakeOptions options_;
};

}  // namespace

MakeOptions ParseMakeOptions(const std::vector<std::string>& arguments) {
    return Parser(arguments).Parse();
}

}  // namespace tools
