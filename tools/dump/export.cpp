#include "tools/dump/export.h"

#include <gsm/gsm.h>

#include <array>
#include <filesystem>
#include <memory>
#include <new>
#include <optional>
#include <vector>

#include "codec/speech_frame.h"
#include "codec/vdec.h"
#include "tools/dump/picture_output.h"
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

// Decodes video records for one or two folders. The decoder is prepared for video messages only, as in the
// player, so that a voice-only message gives no picture whatever its records hold.
class PictureExport {
public:
    PictureExport(const DumpOptions& options, int rate) : picture_(kPictureBytes) {
        if (rate > 0) {
            vdec_init();
            if (!vdec_set_quality(static_cast<signed char>(options.quality))) throw std::bad_alloc();
        }
        if (options.png) png_.emplace(*options.png, PictureOutput::Format::Png);
        if (options.bgr) bgr_.emplace(*options.bgr, PictureOutput::Format::Bgr);
    }
    ~PictureExport() { vdec_free(); }
    PictureExport(const PictureExport&) = delete;
    PictureExport& operator=(const PictureExport&) = delete;

    void Write(std::span<const uint8_t> payload) {
        if (!vdec_decode(payload.data(), payload.size(), picture_.data())) return;
        const std::span<const uint8_t, kPictureBytes> picture(picture_.data(), kPictureBytes);
        if (png_) png_->Write(picture);
        if (bgr_) bgr_->Write(picture);
    }

private:
    std::vector<uint8_t> picture_;
    std::optional<PictureOutput> png_;
    std::optional<PictureOutput> bgr_;
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
}

}  // namespace tools
