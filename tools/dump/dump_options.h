// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tools/export/save_form.h"
#include "tools/export/time_range.h"

namespace tools {

struct DumpOptions {
    std::vector<std::string> messages;
    bool json = false;
    bool json_lines = false;
    std::optional<std::string> wav;
    std::optional<std::string> pcm;
    std::optional<std::string> audio;
    std::optional<std::string> video;
    std::optional<std::string> png;
    std::optional<std::string> bgr;
    const SaveForm* audio_form = nullptr;
    const SaveForm* video_form = nullptr;
    TimeRange range;
    int quality = 3;
    bool force = false;
    unsigned jobs = 0;  // 0: one for each processor
    std::optional<std::string> thumbnail;
    std::optional<int> thumbnail_size;
    bool help = false;
    bool version = false;

    // The longer side of a thumbnail in pixels, where none is asked for.
    static constexpr int kThumbnailSize = 256;

    bool WritesPictures() const { return png || bgr; }
    bool Writes() const { return wav || pcm || audio || video || WritesPictures(); }
    bool AsJson() const { return json || json_lines; }
};

// Reads a command line, main's way. Throws UsageError when it cannot be followed.
DumpOptions ParseDumpOptions(int argc, char** argv);

// What an output's name comes to for a message: {} in it stands for the message's name without folder and
// ".trv".
std::string OutputName(const std::string& pattern, const std::string& message);

// What --help prints.
extern const char* const kDumpHelp;

}  // namespace tools
