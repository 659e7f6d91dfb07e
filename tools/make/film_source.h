// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "codec/picture_geometry.h"
#include "tools/export/ffmpeg.h"

namespace tools {

// What a message takes from a film or a sound file, read through the program ffmpeg, sound and pictures by a
// child each, so that neither waits for the other. Operations throw ToolError, and Interrupted once a signal
// has come.

// The first sound of the file at 8000 Hz, mono, from the film's start on.
class FilmSound {
public:
    explicit FilmSound(const std::string& path);

    // Fills `samples`; a smaller result than asked for is the end, also of a film without sound.
    std::size_t Read(std::span<int16_t> samples);

private:
    std::string path_;
    Ffmpeg ffmpeg_;
};

// What the film shows at the times at which the message's pictures are first seen, scaled to fit 320 × 240
// and centred on black.
class FilmStills {
public:
    // `rate` is 1 to 5 pictures a second.
    FilmStills(const std::string& path, int rate);

    // The next, rows of B, G, R bytes, the bottom row first. False at the end, also of a file without
    // pictures. A last one that is the one before it once more is left out, as that one stays anyway.
    bool Read(std::span<uint8_t, kPictureBytes> bgr);

private:
    void Advance();

    std::vector<uint8_t> last_;  // that was read
    std::vector<uint8_t> current_;
    std::vector<uint8_t> next_;  // empty at the end
    std::string path_;
    Ffmpeg ffmpeg_;
};

}  // namespace tools
