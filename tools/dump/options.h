// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace tools {

struct DumpOptions {
    std::vector<std::string> messages;
    bool json = false;
    std::optional<std::string> wav;
    std::optional<std::string> pcm;
    std::optional<std::string> png;
    std::optional<std::string> bgr;
    int quality = 3;
    std::optional<std::string> thumbnail;
    std::optional<int> thumbnail_size;
    bool help = false;
    bool version = false;

    // The longer side of a thumbnail in pixels, where none is asked for.
    static constexpr int kThumbnailSize = 256;

    bool WritesSound() const { return wav || pcm; }
    bool WritesPictures() const { return png || bgr; }
    bool Writes() const { return WritesSound() || WritesPictures(); }
};

// Reads a command line, main's way. Throws UsageError when it cannot be followed.
DumpOptions ParseDumpOptions(int argc, char** argv);

// What --help prints.
extern const char* const kDumpHelp;

}  // namespace tools
