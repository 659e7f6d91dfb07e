// SPDX-License-Identifier: MIT
#include "tools/make/film_source.h"

#include <algorithm>
#include <bit>
#include <utility>

#include "codec/message_time.h"
#include "tools/ending_signal.h"
#include "tools/tool_error.h"

namespace tools {
namespace {

using Words = std::vector<std::string>;

Words Reading(const std::string& path, const Words& output) {
    Words words = {"-i", "file:" + path};
    words.insert(words.end(), output.begin(), output.end());
    words.emplace_back("pipe:1");
    return words;
}

Words SoundWords() {
    return {"-map", "0:a:0?",
            "-af",  "aresample=async=1:first_pts=0",
            "-ac",  "1",
            "-ar",  "8000",
            "-f",   std::endian::native == std::endian::little ? "s16le" : "s16be"};
}

Words PictureWords(int rate) {
    const std::string period = std::to_string(PicturePeriodMilliseconds(rate));
    // At (k + 1) periods the newest frame until then is taken, so the one of the start goes. Containers move
    // pictures by some milliseconds against their sound: one that comes a frame of speech late is still in
    // time.
    return {"-map",
            "0:V:0?",
            "-vf",
            "setpts=PTS-0.02/TB,tpad=stop=1:stop_mode=clone,fps=1000/" + period +
                ":start_time=0:round=up,trim=start_frame=1,scale=iw*sar:ih,"
                "scale=320:240:force_original_aspect_ratio=decrease:flags=area+accurate_rnd+full_chroma_int,"
                "pad=320:240:-1:-1:black,setsar=1,vflip",
            "-fps_mode",
            "passthrough",
            "-pix_fmt",
            "bgr24",
            "-f",
            "rawvideo"};
}

}  // namespace

FilmSound::FilmSound(const std::string& path)
    : path_(path), ffmpeg_(Ffmpeg::Reading(Reading(path, SoundWords()))) {}

std::size_t FilmSound::Read(std::span<int16_t> samples) {
    const std::span<uint8_t> bytes(reinterpret_cast<uint8_t*>(samples.data()), samples.size_bytes());
    return ffmpeg_.Read(bytes, &ThrowIfInterrupted, path_) / sizeof(int16_t);
}

FilmStills::FilmStills(const std::string& path, int rate)
    : path_(path), ffmpeg_(Ffmpeg::Reading(Reading(path, PictureWords(rate)))) {
    Advance();
}

bool FilmStills::Read(std::span<uint8_t, kPictureBytes> bgr) {
    if (next_.empty()) return false;
    std::swap(current_, next_);
    Advance();
    if (next_.empty() && std::equal(current_.begin(), current_.end(), last_.begin(), last_.end()))
        return false;
    std::copy(current_.begin(), current_.end(), bgr.begin());
    last_ = current_;
    return true;
}

void FilmStills::Advance() {
    next_.resize(kPictureBytes);
    if (ffmpeg_.Read(next_, &ThrowIfInterrupted, path_) < kPictureBytes) next_.clear();
}

}  // namespace tools
