// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "tools/export/message_file.h"
#include "tools/export/output_file.h"
#include "tools/export/save_form.h"
#include "tools/export/sound_output.h"
#include "tools/export/time_range.h"

namespace tools {

// What to save of a message, and where.
struct SaveRequest {
    std::string output;  // "-" is standard output
    const SaveForm* form = nullptr;
    TimeRange range;
    // The message's, in frames, where it is known beforehand: a film's last picture then ends with the sound,
    // instead of after a whole period.
    std::optional<int64_t> length;
    int quality = 3;  // the level that pictures are decoded at
    int threads = 0;  // of the encoder's; 0: as it likes
    ReplaceRule replace;
};

// Told at every step how much is done, 0 to 1. What it throws ends the saving, and nothing is left behind.
using SaveWatch = std::function<void(double share)>;

// Both read the message once, from where it stands: at its first record. They run on any thread, and throw
// ToolError when something cannot be read or written; the output is then as it was.

// Pictures and, where the form has it, sound, as the player plays them. A voice-only message gives a film of
// its trace.
void SaveFilm(MessageFile& message, const SaveRequest& request, const SaveWatch& watch);

// Sound alone: silence where there is no speech, unless `speech_alone`. `make_output` may encode it without
// ffmpeg; where it is not there or returns null, ffmpeg does,
// except for WAV.
struct SoundRequest : SaveRequest {
    bool speech_alone = false;
    std::function<std::unique_ptr<SoundOutput>(const SaveForm& form, OutputFile& file)> make_output;
};
void SaveSound(MessageFile& message, const SoundRequest& request, const SaveWatch& watch);

}  // namespace tools
