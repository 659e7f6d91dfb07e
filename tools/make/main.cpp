// SPDX-License-Identifier: MIT
#include <QCoreApplication>
#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>
#include <new>
#include <optional>
#include <string>
#include <vector>

#include "tools/encode/message_writer.h"
#include "tools/encode/picture_encoder.h"
#include "tools/encode/speech_encoder.h"
#include "tools/make/make_options.h"
#include "tools/make/picture_source.h"
#include "tools/make/sound_source.h"
#include "tools/ending_signal.h"
#include "tools/progress.h"
#include "tools/tool_error.h"

namespace tools {
namespace {

// Encodes the pictures of a message one after the other, each when its turn comes.
class PictureTrack {
public:
    PictureTrack(const MakeOptions& options)
        : paths_(options.pictures), rate_(options.rate), encoder_(options.quality), bgr_(kPictureBytes) {}

    // Writes the pictures that go before speech block `block`.
    void WriteBefore(int64_t block, MessageWriter& writer) {
        const auto wanted = static_cast<std::size_t>(PicturesBeforeBlock(block, rate_));
        for (; written_ < std::min(paths_.size(), wanted); ++written_) {
            const std::span<uint8_t, kPictureBytes> bgr(bgr_.data(), kPictureBytes);
            LoadPicture(paths_[written_], bgr);
            writer.AddPicture(encoder_.Encode(bgr));
        }
    }

    int64_t blocks_needed() const { return BlocksNeededFor(std::ssize(paths_), rate_); }

private:
    const std::vector<std::string>& paths_;
    int rate_;
    PictureEncoder encoder_;
    std::vector<uint8_t> bgr_;
    std::size_t written_ = 0;
};

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
    inputs.push_back(options.sound);
    for (const std::string& input : inputs) {
        std::error_code error;
        if (std::filesystem::equivalent(input, options.message, error) && !error) {
            throw ToolError(options.message + ": is one of the files that the message is made from");
        }
    }
}

void MakeMessage(const MakeOptions& options) {
    RefuseToOverwriteInput(options);
    SoundSource sound(options.sound);
    SpeechEncoder speech;
    std::optional<PictureTrack> pictures;
    if (!options.pictures.empty()) pictures.emplace(options);
    MessageWriter writer(options.message, options.rate);

    const int64_t picture_blocks = pictures ? pictures->blocks_needed() : 0;
    const double expected_blocks =
        std::max(static_cast<double>(picture_blocks), sound.seconds() * kSpeechSampleRate / kSamplesPerBlock);
    Progress progress("trvmake: " + options.message);
    std::array<int16_t, kSamplesPerBlock> samples;
    std::array<uint8_t, kSpeechBlockBytes> block;
    while (true) {
        ThrowIfInterrupted();
        const std::size_t got = sound.Read(samples);
        if (got == 0 && writer.speech_blocks() == 0) throw ToolError(options.sound + ": holds no sound");
        if (got == 0 && writer.speech_blocks() >= picture_blocks) break;
        std::fill(samples.begin() + static_cast<std::ptrdiff_t>(got), samples.end(), int16_t{0});
        if (pictures) pictures->WriteBefore(writer.speech_blocks(), writer);
        EncodeBlock(speech, samples, block);
        writer.AddSpeechBlock(block);
        progress.Show(static_cast<double>(writer.speech_blocks()) / expected_blocks);
    }
    writer.Finish();
}

int Run(int argc, char** argv) {
    MakeOptions options;
    try {
        options = ParseMakeOptions(std::vector<std::string>(argv + 1, argv + argc));
    } catch (const UsageError& error) {
        std::fprintf(stderr, "trvmake: %s\nTry 'trvmake --help'.\n", error.what());
        return 2;
    }
    if (options.help) {
        std::fputs(kMakeHelp, stdout);
        return 0;
    }
    if (options.version) {
        std::puts("trvmake " TRV_VERSION);
        return 0;
    }
    CatchEndingSignals();
    try {
        MakeMessage(options);
    } catch (const Interrupted&) {
        EndBySignal();
    } catch (const ToolError& error) {
        std::fprintf(stderr, "trvmake: %s\n", error.what());
        return 1;
    } catch (const std::bad_alloc&) {
        std::fputs("trvmake: out of memory\n", stderr);
        return 1;
    }
    return 0;
}

}  // namespace
}  // namespace tools

int main(int argc, char** argv) {
    // Tells the image reader where its format plug-ins are; needs no display.
    int qt_argc = 1;
    const QCoreApplication application(qt_argc, argv);
    return tools::Run(argc, argv);
}
