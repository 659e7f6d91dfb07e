// SPDX-License-Identifier: MIT
#include "tools/export/save_message.h"

#include <algorithm>
#include <array>
#include <bit>
#include <sstream>
#include <vector>

#include "tools/export/ffmpeg.h"
#include "tools/export/film_pictures.h"
#include "tools/export/message_feed.h"
#include "tools/tool_error.h"

namespace tools {
namespace {

using Words = std::vector<std::string>;

void AddWords(Words& words, const std::string& text) {
    std::istringstream stream(text);
    for (std::string word; stream >> word;) words.push_back(word);
}

// For ffmpeg, in this machine's order of bytes.
class SoundBytes : public ByteSource {
public:
    explicit SoundBytes(MessageFeed& feed) : feed_(feed) {}
    std::span<const int16_t> Take() {
        const std::span<const int16_t> samples = feed_.TakeSound();
        taken_ += std::ssize(samples);
        return samples;
    }
    std::span<const uint8_t> Next() override {
        const std::span<const int16_t> samples = Take();
        return {reinterpret_cast<const uint8_t*>(samples.data()), samples.size_bytes()};
    }
    double Share() const {
        return feed_.ShareAt((feed_.range().from + taken_ / kSpeechFrameSamples) * kFrameMilliseconds);
    }

private:
    MessageFeed& feed_;
    int64_t taken_ = 0;
};

class PictureBytes : public ByteSource {
public:
    explicit PictureBytes(FilmPictures& pictures) : pictures_(pictures) {}
    std::span<const uint8_t> Next() override { return pictures_.Next(); }

private:
    FilmPictures& pictures_;
};

void AddSoundInput(Words& words, std::size_t input) {
    AddWords(words, std::endian::native == std::endian::little ? "-f s16le" : "-f s16be");
    AddWords(words, "-ar 8000 -ac 1 -i " + Ffmpeg::InputName(input));
}

// Each picture gets its time here, because the first is not always seen for a whole period.
void AddPictureInput(Words& words, const FilmPictures& pictures) {
    AddWords(words, "-f rawvideo -pixel_format bgr24 -video_size " + std::to_string(kPictureWidth) + "x" +
                        std::to_string(kPictureHeight) + " -framerate 1000/" +
                        std::to_string(pictures.period_ms()) + " -i " + Ffmpeg::InputName(0));
}

void AddPictureOutput(Words& words, const FilmPictures& pictures, const SaveRequest& request) {
    const SaveForm& form = *request.form;
    const std::string times = "settb=1/1000,setpts='if(N," + std::to_string(pictures.second_ms()) +
                              "+(N-1)*" + std::to_string(pictures.period_ms()) + ",0)'";
    words.insert(words.end(),
                 {"-map", "0:v", "-vf", (pictures.bottom_up() ? "vflip," : "") + times + form.filter});
    AddWords(words, "-fps_mode:v passthrough -enc_time_base:v 1:1000");
    AddWords(words, form.picture_encoder);
    if (!request.length) return;
    const int64_t end =
        (std::min(*request.length, request.range.to) - request.range.from) * kFrameMilliseconds;
    words.insert(words.end(), {"-bsf:v", "setts=duration='min(" + std::to_string(pictures.period_ms()) + "," +
                                             std::to_string(end) + "-PTS)'"});
}

void AddOutput(Words& words, const SaveRequest& request, const OutputFile& file) {
    if (request.threads > 0) words.insert(words.end(), {"-threads", std::to_string(request.threads)});
    AddWords(words, file.can_go_back() ? request.form->container : request.form->container_to_pipe);
    words.push_back(file.path_for_program());
}

void RefuseNothing(MessageFeed& feed, const std::string& message) {
    if (!feed.LastsBeyond(feed.range().from * kFrameMilliseconds))
        throw ToolError(message + ": holds nothing to save" +
                        (feed.range().IsWhole() ? "" : " at that time"));
}

}  // namespace

void SaveFilm(MessageFile& message, const SaveRequest& request, const SaveWatch& watch) {
    const SaveForm& form = *request.form;
    const bool voice = message.rate() == 0;
    double share = 0;
    const auto check = [&] { watch(share); };
    MessageFeed feed(
        message, request.range,
        {.sound = form.HasSound(), .pictures = !voice, .levels = voice ? TracePictures::kLevels : 0}, check);
    OutputFile file(request.output, request.replace, message.path());
    RefuseNothing(feed, message.path());
    std::unique_ptr<FilmPictures> pictures;
    if (voice) {
        pictures = std::make_unique<TracePictures>(feed);
    } else {
        pictures = std::make_unique<MessagePictures>(feed, request.quality);
    }
    PictureBytes picture_bytes(*pictures);
    SoundBytes sound_bytes(feed);

    Words words;
    AddPictureInput(words, *pictures);
    if (form.HasSound()) AddSoundInput(words, 1);
    AddPictureOutput(words, *pictures, request);
    if (form.HasSound()) AddWords(words, std::string("-map 1:a ") + form.sound_encoder);
    AddOutput(words, request, file);
    Ffmpeg ffmpeg(words, form.HasSound() ? 2 : 1, file.descriptor_for_program());
    const std::array<ByteSource*, 2> sources = {&picture_bytes, &sound_bytes};
    const auto watched = [&] {
        share = pictures->Share();
        check();
    };
    ffmpeg.Feed(std::span(sources).first(form.HasSound() ? 2 : 1), watched, file.name());
    file.Finish();
}

void SaveSound(MessageFile& message, const SoundRequest& request, const SaveWatch& watch) {
    double share = 0;
    const auto check = [&] { watch(share); };
    MessageFeed feed(message, request.range, {.sound = true, .fill_gaps = !request.speech_alone}, check);
    OutputFile file(request.output, request.replace, message.path());
    SoundBytes sound(feed);
    const bool wav = request.form == FindSaveForm("wav");
    if (request.make_output || wav) {
        std::unique_ptr<SoundOutput> output;
        if (request.make_output) {
            output = request.make_output(*request.form, file);
        } else {
            output = std::make_unique<WavSoundOutput>(file, std::nullopt);
        }
        if (output) {
            for (auto samples = sound.Take(); !samples.empty(); samples = sound.Take()) {
                output->Write(samples);
                share = sound.Share();
            }
            output->Finish();
            return;
        }
    }
    RefuseNothing(feed, message.path());
    Words words;
    AddSoundInput(words, 0);
    AddWords(words, request.form->sound_encoder);
    AddOutput(words, request, file);
    Ffmpeg ffmpeg(words, 1, file.descriptor_for_program());
    ByteSource* const sources[] = {&sound};
    const auto watched = [&] {
        share = sound.Share();
        check();
    };
    ffmpeg.Feed(sources, watched, file.name());
    file.Finish();
}

}  // namespace tools
