// SPDX-License-Identifier: MIT
#include "tools/export/sound_output.h"

#include <algorithm>
#include <array>
#include <bit>
#include <iterator>
#include <limits>
#include <string_view>

#include "codec/message_format.h"

namespace tools {
namespace {

constexpr uint64_t kBytesPerSample = 2;
constexpr std::size_t kWavHeaderBytes = 44;
constexpr uint16_t kWavPcm = 1;

// Lays the fields of a WAV header one after the other, little-endian.
class HeaderWriter {
public:
    void Tag(std::string_view tag) { next_ = std::copy(tag.begin(), tag.end(), next_); }
    void Number(uint64_t value, unsigned bytes) {
        for (unsigned i = 0; i < bytes; ++i) *next_++ = static_cast<uint8_t>(value >> (8 * i));
    }
    const std::array<uint8_t, kWavHeaderBytes>& bytes() const { return bytes_; }

private:
    std::array<uint8_t, kWavHeaderBytes> bytes_ = {};
    std::array<uint8_t, kWavHeaderBytes>::iterator next_ = bytes_.begin();
};

std::array<uint8_t, kWavHeaderBytes> WavHeader(uint64_t sample_count) {
    constexpr uint64_t kBeyondSize = kWavHeaderBytes - 8;
    constexpr uint64_t kMostBytes = std::numeric_limits<uint32_t>::max() - kBeyondSize;
    // A message of more than 37 hours does not fit a WAV file's sizes; they then say "to the end".
    const uint64_t data_bytes = std::min(sample_count, kMostBytes / kBytesPerSample + 1) * kBytesPerSample;
    HeaderWriter header;
    header.Tag("RIFF");
    header.Number(std::min(data_bytes, kMostBytes) + kBeyondSize, 4);
    header.Tag("WAVEfmt ");
    header.Number(16, 4);  // size of the format fields
    header.Number(kWavPcm, 2);
    header.Number(1, 2);  // channels
    header.Number(kSpeechSampleRate, 4);
    header.Number(kSpeechSampleRate * kBytesPerSample, 4);  // bytes per second
    header.Number(kBytesPerSample, 2);                      // bytes per sample of all channels
    header.Number(kBytesPerSample * 8, 2);
    header.Tag("data");
    header.Number(std::min(data_bytes, kMostBytes), 4);
    return header.bytes();
}

}  // namespace

void RawSoundOutput::Write(std::span<const int16_t> samples) {
    if constexpr (std::endian::native == std::endian::little) {
        file_.Write({reinterpret_cast<const uint8_t*>(samples.data()), samples.size_bytes()});
    } else {
        for (const int16_t sample : samples) {
            const auto bits = static_cast<uint16_t>(sample);
            file_.Write(std::array{static_cast<uint8_t>(bits), static_cast<uint8_t>(bits >> 8)});
        }
    }
}

WavSoundOutput::WavSoundOutput(OutputFile& file, std::optional<uint64_t> sample_count)
    : RawSoundOutput(file) {
    file.Write(WavHeader(sample_count.value_or(std::numeric_limits<uint32_t>::max())));
}

void WavSoundOutput::Write(std::span<const int16_t> samples) {
    RawSoundOutput::Write(samples);
    written_ += samples.size();
}

void WavSoundOutput::Finish() {
    if (file().can_go_back()) file().Overwrite(0, WavHeader(written_));
    RawSoundOutput::Finish();
}

}  // namespace tools
