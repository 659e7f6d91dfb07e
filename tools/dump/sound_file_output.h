// SPDX-License-Identifier: MIT
#pragma once

#include <memory>

#include "tools/export/save_form.h"
#include "tools/export/sound_output.h"

namespace tools {

// Whether this libsndfile knows the form: FLAC, Opus, Ogg Vorbis or MP3.
bool IsLibraryForm(const SaveForm& form);

// Encodes to FLAC, Opus, Ogg Vorbis or MP3 through libsndfile. `file` outlives it. Null for a form
// that is not the library's. Throws ToolError.
std::unique_ptr<SoundOutput> MakeSoundFileOutput(const SaveForm& form, OutputFile& file);

}  // namespace tools
