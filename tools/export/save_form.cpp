// SPDX-License-Identifier: MIT
#include "tools/export/save_form.h"

#include <algorithm>
#include <cctype>
#include <iterator>

namespace tools {
namespace {

using Kind = SaveForm::Kind;

constexpr const char* kPalettePerPicture =
    ",split[pictures][seen];[seen]palettegen=stats_mode=single[palette];[pictures][palette]paletteuse=new=1";

// Raw samples and WAV are written without ffmpeg.
constexpr SaveForm kForms[] = {
    {"mp4", "MP4 (H.264, AAC)", Kind::Film, "-f mp4 -movflags +faststart -video_track_timescale 1000",
     "-f mp4 -movflags +frag_keyframe+empty_moov -video_track_timescale 1000", ",format=yuv420p",
     "-c:v libx264 -preset veryfast -crf 18 -bf 0", "-c:a aac -b:a 48k"},
    {"webm", "WebM (VP9, Opus)", Kind::Film, "-f webm", "-f webm", ",format=yuv420p",
     "-c:v libvpx-vp9 -crf 30 -b:v 0 -deadline good -cpu-used 5 -row-mt 1",
     "-c:a libopus -b:a 24k -application voip"},
    {"mkv", "Matroska, lossless (FFV1, FLAC)", Kind::Film, "-f matroska", "-f matroska", ",format=bgr0",
     "-c:v ffv1 -level 3 -slicecrc 1", "-c:a flac"},
    {"gif", "GIF, pictures alone", Kind::Pictures, "-f gif -loop 0", "-f gif -loop 0", kPalettePerPicture,
     "-c:v gif", ""},
    {"webp", "WebP, pictures alone", Kind::Pictures, "-f webp -loop 0", "-f webp -loop 0", ",format=yuv420p",
     "-c:v libwebp_anim -quality 80", ""},
    {"wav", "WAV", Kind::Sound, "-f wav", "-f wav", "", "", "-c:a pcm_s16le"},
    {"flac", "FLAC", Kind::Sound, "-f flac", "-f flac", "", "", "-c:a flac"},
    {"opus", "Opus", Kind::Sound, "-f opus", "-f opus", "", "", "-c:a libopus -b:a 24k -application voip"},
    {"ogg", "Ogg Vorbis", Kind::Sound, "-f ogg", "-f ogg", "", "", "-c:a libvorbis -q:a 3"},
    {"mp3", "MP3", Kind::Sound, "-f mp3", "-f mp3", "", "", "-c:a libmp3lame -b:a 32k"},
};

}  // namespace

std::span<const SaveForm> SaveForms() {
    return kForms;
}

const SaveForm* FindSaveForm(std::string_view ending) {
    const auto* const found = std::find_if(std::begin(kForms), std::end(kForms), [=](const SaveForm& form) {
        return std::equal(ending.begin(), ending.end(), form.ending,
                          form.ending + std::string_view(form.ending).size(),
                          [](char a, char b) { return std::tolower(static_cast<unsigned char>(a)) == b; });
    });
    return found == std::end(kForms) ? nullptr : found;
}

std::string EndingOf(const std::string& path) {
    const auto name = path.rfind('/') + 1;
    const auto point = path.rfind('.');
    return point == std::string::npos || point < name ? "" : path.substr(point + 1);
}

}  // namespace tools
