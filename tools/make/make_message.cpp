// SPDX-License-Identifier: MIT
#include "tools/make/make_message.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tools/encode/message_writer.h"
#include "tools/encode/picture_encoder.h"
#include "tools/encode/speech_encoder.h"
#include "tools/ending_signal.h"
#include "tools/make/film_source.h"
#include "tools/make/picture_source.h"
#include "tools/make/sound_source.h"
#include "tools/progress.h"
#include "tools/tool_error.h"

namespace tools {
namespace {

using Picture = std::span<uint8_t, kPictureBytes>;

// What a message is made of.
struct Material {
    // Fills the samples; fewer than asked for are the last.
    std::function<std::size_t(std::span<int16_t, kSamplesPerBlock>)> sound;
    // The next picture; false when there is none.
    std::function<bool(Picture)> picture;
    std::string name;              // of what holds the sound
    double expected_blocks = 0;    // 0: not known
    bool ends_with_sound = false;  // the last picture need not be seen for its whole period
};

Material FromParts(const MakeOptions& options) {
    const auto sound = std::make_shared<SoundSource>(options.sound);
    Material material;
    material.sound = [sound](auto samples) { return sound->Read(samples); };
    material.picture = [&paths = options.pictures, next = std::size_t{0}](Picture bgr) mutable {
        if (next == paths.size()) return false;
        LoadPicture(paths[next++], bgr);
        return true;
    };
    material.name = options.sound;
    const auto pictures = static_cast<double>(
        options.rate == 0 ? 0 : BlocksNeededFor(std::ssize(options.pictures), options.rate));
    material.expected_blocks = std::max(pictures, sound->seconds() * kSpeechSampleRate / kSamplesPerBlock);
    return material;
}

Material FromInput(const MakeOptions& options) {
    const auto sound = std::make_shared<FilmSound>(options.input);
    const auto stills = std::make_shared<FilmStills>(options.input, options.rate);
    Material material;
    material.sound = [sound](auto samples) { return sound->Read(samples); };
    material.picture = [stills](Picture bgr) { return stills->Read(bgr); };
    material.name = options.input;
    material.ends_with_sound = true;
    return material;
}

// Encodes the pictures of a message one after the other, each when its turn comes.
class PictureTrack {
public:
    PictureTrack(std::function<bool(Picture)> source, const MakeOptions& options)
        : source_(std::move(source)), encoder_(options.quality), bgr_(kPictureBytes) {}

    // Whether there is another picture, which is read for it.
    bool HasMore() {
        if (!loaded_ && !ended_) {
            loaded_ = source_(picture());
            ended_ = !loaded_;
        }
        return loaded_;
    }

    // Writes the pictures that go before speech block `block`.
    void WriteBefore(int64_t block, int rate, MessageWriter& writer) {
        const int64_t wanted = PicturesBeforeBlock(block, rate);
        for (; written_ < wanted && HasMore(); ++written_) {
            writer.AddPicture(encoder_.Encode(picture()));
            loaded_ = false;
        }
    }

    int64_t written() const { return written_; }

private:
    Picture picture() { return Picture(bgr_.data(), kPictureBytes); }

    std::function<bool(Picture)> source_;
    PictureEncoder encoder_;
    std::vector<uint8_t> bgr_;
    bool loaded_ = false;
    bool ended_ = false;
    int64_t written_ = 0;
};

// Blocks of speech until the last of the pictures has been seen.
int64_t BlocksFor(int64_t pictures, int rate, bool whole_period) {
    if (pictures == 0) return 0;
    return whole_period ? BlocksNeededFor(pictures, rate)
                        : PictureDueFrame(pictures - 1, rate) / kFramesPerSpeechBlock + 1;
}

void EncodeBlock(SpeechEncoder& encoder, std::span<const int16_t, kSamplesPerBlock> samples,
                 std::span<uint8_t, kSpeechBlockBytes> block) {
    for (std::size_t frame = 0; frame < kFramesPerSpeechBlock; ++frame) {
        encoder.Encode(std::span<const int16_t, kSpeechFrameSamples>(
                           samples.data() + frame * kSpeechFrameSamples, kSpeechFrameSamples),
                       std::span<uint8_t, kSpeechFrameBytes>(block.data() + frame * kSpeechFrameBytes,
                                                             kSpeechFrameBytes));
    }
}

void RefuseToOverwriteInput(const MakeOptions& options) {
    std::vector<std::string> inputs = options.pictures;
    inputs.push_back(options.input.empty() ? options.sound : options.input);
    for (const std::string& input : inputs) {
        std::error_code error;
        if (std::filesystem::equivalent(input, options.message, error) && !error) {
            throw ToolError(options.message + ": is one of the files that the message is made from");
        }
    }
}

}  // namespace

void MakeMessage(const MakeOptions& options) {
    RefuseToOverwriteInput(options);
    const Material material = options.input.empty() ? FromParts(options) : FromInput(options);
    SpeechEncoder speech;
    PictureTrack pictures(material.picture, options);
    const int rate = pictures.HasMore() ? options.rate : 0;
    if (rate == 0 && options.rate_asked) throw ToolError(options.input + ": holds no pictures");
    MessageWriter writer(options.message, rate);

    Progress progress("trvmake: " + options.message);
    std::array<int16_t, kSamplesPerBlock> samples;
    std::array<uint8_t, kSpeechBlockBytes> block;
    bool heard = false;
    while (true) {
        ThrowIfInterrupted();
        const std::size_t got = material.sound(samples);
        heard = heard || got > 0;
        if (!heard && (rate == 0 || !material.ends_with_sound))
            throw ToolError(material.name + ": holds no sound");
        const bool whole_period = !material.ends_with_sound || !heard;
        if (got == 0 && !pictures.HasMore() &&
            writer.speech_blocks() >= BlocksFor(pictures.written(), rate, whole_period))
            break;
        std::fill(samples.begin() + static_cast<std::ptrdiff_t>(got), samples.end(), int16_t{0});
        if (rate > 0) pictures.WriteBefore(writer.speech_blocks(), rate, writer);
        EncodeBlock(speech, samples, block);
        writer.AddSpeechBlock(block);
        if (material.expected_blocks > 0)
            progress.Show(static_cast<double>(writer.speech_blocks()) / material.expected_blocks);
    }
    writer.Finish();
}

}  // namespace tools
