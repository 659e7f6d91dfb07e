// SPDX-License-Identifier: MIT
#pragma once

#include <memory>

#include "tools/export/save_form.h"
#include "tools/export/sound_output.h"

namespace tools {

// Encodes to FLAC, Opus, Ogg Vorbis or MP3 through libsndfile. `file` outlives it. Null where this libsndfile
// does not know the form. Throws ToolError.
std::unique_ptr<SoundOutput> MakeSoundFileOutput(const SaveForm& form, OutputFile& file);

}  // namespace tools
