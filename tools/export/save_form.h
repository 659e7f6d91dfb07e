// SPDX-License-Identifier: MIT
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace tools {

// A form that a message can be saved in, named by the ending of a file's name.
struct SaveForm {
    enum class Kind { Film, Pictures, Sound };

    const char* ending;  // without the point
    const char* about;   // for people
    Kind kind;
    // For ffmpeg, words with one blank between them: the container, and where it cannot go back in its
    // output; the pictures' encoder; the sound's. The filter comes behind those that every film has.
    const char* container;
    const char* container_to_pipe;
    const char* filter;
    const char* picture_encoder;
    const char* sound_encoder;

    bool HasPictures() const { return kind != Kind::Sound; }
    bool HasSound() const { return kind != Kind::Pictures; }
};

// Films and pictures first, each kind's usual form before the others.
std::span<const SaveForm> SaveForms();

// The form of that ending, in either case of letters; null when there is none.
const SaveForm* FindSaveForm(std::string_view ending);
// The ending of a path's last part, without the point.
std::string EndingOf(const std::string& path);

}  // namespace tools
