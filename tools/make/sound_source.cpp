// SPDX-License-Identifier: MIT
#include "tools/make/sound_source.h"

#include <samplerate.h>
#include <sndfile.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "codec/message_format.h"
#include "tools/tool_error.h"

namespace tools {
namespace {

constexpr std::size_t kChunkFrames = 4096;
// The range of ratios that the converter takes.
constexpr int kLargestRatio = 256;

int16_t ToSample(float value) {
    return static_cast<int16_t>(std::lrint(std::clamp(value * 32768.0F, -32768.0F, 32767.0F)));
}

}  // namespace

struct SoundSource::Impl {
    struct CloseFile {
        void operator()(SNDFILE* opened) const { sf_close(opened); }
    };
    struct DeleteConverter {
        void operator()(SRC_STATE* state) const { src_delete(state); }
    };

    std::string path;
    SF_INFO info{};
    std::unique_ptr<SNDFILE, CloseFile> file;
    std::unique_ptr<SRC_STATE, DeleteConverter> converter;
    double ratio = 1.0;
    std::vector<float> interleaved;
    std::vector<float> mono;
    std::vector<float> converted;

    [[noreturn]] void Fail(const std::string& what) const { throw ToolError(path + ": " + what); }

    // Reads the next stretch of the file into `mono`, at most `frames` long.
    std::size_t ReadMono(std::size_t frames) {
        const auto channels = static_cast<std::size_t>(info.channels);
        frames = std::min(frames, kChunkFrames);
        const sf_count_t got =
            sf_readf_float(file.get(), interleaved.data(), static_cast<sf_count_t>(frames));
        if (got <= 0) return 0;
        const auto count = static_cast<std::size_t>(got);
        const float share = 1.0F / static_cast<float>(channels);
        for (std::size_t i = 0; i < count; ++i) {
            float sum = 0;
            for (std::size_t c = 0; c < channels; ++c) sum += interleaved[i * channels + c];
            // A damaged floating-point file may hold anything.
            mono[i] = std::isfinite(sum) ? sum * share : 0.0F;
        }
        return count;
    }

    static long Supply(void* self, float** data) {
        auto* const impl = static_cast<Impl*>(self);
        *data = impl->mono.data();
        return static_cast<long>(impl->ReadMono(kChunkFrames));
    }
};

SoundSource::SoundSource(const std::string& path) : impl_(std::make_unique<Impl>()) {
    Impl& s = *impl_;
    s.path = path;
    s.file.reset(sf_open(path.c_str(), SFM_READ, &s.info));
    if (!s.file) s.Fail("cannot be read as sound: " + std::string(sf_strerror(nullptr)));
    if (s.info.samplerate < kSpeechSampleRate / kLargestRatio + 1 ||
        s.info.samplerate > kSpeechSampleRate * kLargestRatio) {
        s.Fail("has an unusable sample rate of " + std::to_string(s.info.samplerate));
    }
    s.interleaved.resize(kChunkFrames * static_cast<std::size_t>(s.info.channels));
    s.mono.resize(kChunkFrames);
    if (s.info.samplerate == kSpeechSampleRate) return;

    s.ratio = static_cast<double>(kSpeechSampleRate) / s.info.samplerate;
    int error = 0;
    s.converter.reset(src_callback_new(&Impl::Supply, SRC_SINC_MEDIUM_QUALITY, 1, &error, &s));
    if (!s.converter) s.Fail(std::string("cannot be converted: ") + src_strerror(error));
}

SoundSource::~SoundSource() = default;

double SoundSource::seconds() const {
    return static_cast<double>(std::max<sf_count_t>(impl_->info.frames, 0)) / impl_->info.samplerate;
}

std::size_t SoundSource::Read(std::span<int16_t> samples) {
    Impl& s = *impl_;
    s.converted.resize(samples.size());
    std::size_t filled = 0;
    while (filled < samples.size()) {
        const std::size_t wanted = samples.size() - filled;
        const float* from = s.mono.data();
        std::size_t count = 0;
        if (s.converter) {
            const long got =
                src_callback_read(s.converter.get(), s.ratio, static_cast<long>(wanted), s.converted.data());
            if (got < 0 || src_error(s.converter.get()) != 0) {
                s.Fail(std::string("cannot be converted: ") + src_strerror(src_error(s.converter.get())));
            }
            count = static_cast<std::size_t>(got);
            from = s.converted.data();
        } else {
            count = s.ReadMono(wanted);
        }
        if (count == 0) {
            // Looked at here, because no exception may cross the converter's call to Supply.
            if (sf_error(s.file.get()) != SF_ERR_NO_ERROR) {
                s.Fail("cannot be read: " + std::string(sf_strerror(s.file.get())));
            }
            break;
        }
        std::transform(from, from + count, samples.begin() + static_cast<std::ptrdiff_t>(filled), ToSample);
        filled += count;
    }
    return filled;
}

}  // namespace tools
