// SPDX-License-Identifier: MIT
#include "tools/dump/export.h"

#include <gsm/gsm.h>

#include <array>
#include <filesystem>
#include <memory>
#include <new>
#include <optional>

#include "codec/speech_frame.h"
#include "tools/dump/picture_export.h"
#include "tools/dump/sound_output.h"
#include "tools/progress.h"
#include "tools/tool_error.h"

namespace tools {
namespace {

// Decodes speech blocks for one or two files.
class SpeechExport {
public:
    SpeechExport(const DumpOptions& options, uint64_t sample_count) : decoder_(gsm_create()) {
        if (!decoder_) throw std::bad_alloc();
        if (options.wav) wav_.emplace(*options.wav, SoundOutput::Format::Wav, sample_count);
        if (options.pcm) raw_.emplace(*options.pcm, SoundOutput::Format::Raw, sample_count);
    }

    void Write(std::span<const uint8_t> block) {
        for (std::size_t frame = 0; frame < kFramesPerSpeechBlock; ++frame) {
            DecodeSpeechFrame(decoder_.get(), block.data() + frame * kSpeechFrameBytes,
                              samples_.data() + frame * kSpeechFrameSamples);
        }
        if (wav_) wav_->Write(samples_);
        if (raw_) raw_->Write(samples_);
    }

    void Close() {
        if (wav_) wav_->Close();
        if (raw_) raw_->Close();
    }

private:
    struct Destroy {
        void operator()(gsm state) const { gsm_destroy(state); }
    };
    std::unique_ptr<gsm_state, Destroy> decoder_;
    std::optional<SoundOutput> wav_;
    std::optional<SoundOutput> raw_;
    std::array<int16_t, std::size_t{kSpeechFrameSamples} * kFramesPerSpeechBlock> samples_;
};

void RefuseToOverwrite(const std::string& message, const std::optional<std::string>& output) {
    std::error_code error;
    if (output && std::filesystem::equivalent(message, *output, error) && !error) {
        throw ToolError(*output + ": is the message itself, not overwritten");
    }
}

}  // namespace

void ExportMessage(MessageFile& message, const MessageReport& report, const DumpOptions& options) {
    RefuseToOverwrite(message.path(), options.wav);
    RefuseToOverwrite(message.path(), options.pcm);
    std::optional<SpeechExport> speech;
    std::optional<PictureExport> pictures;
    if (options.WritesSound()) speech.emplace(options, report.speech_frames() * kSpeechFrameSamples);
    if (options.WritesPictures()) pictures.emplace(options, report.rate);

    Progress progress("trvdump: " + message.path());
    const auto total = static_cast<double>(report.speech_blocks + report.pictures.size());
    uint64_t done = 0;
    while (true) {
        const MessageRecord record = message.Read();
        if (record.kind == MessageRecordKind::End) break;
        if (record.kind == MessageRecordKind::Skipped) continue;
        if (record.kind == MessageRecordKind::Speech && speech) speech->Write(record.body);
        if (record.kind == MessageRecordKind::Video && pictures) pictures->Write(record.body);
        progress.Show(static_cast<double>(++done) / total);
    }
    if (speech) speech->Close();
    if (pictures) pictures->Close();
}

}  // namespace tools
