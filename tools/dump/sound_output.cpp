// SPDX-License-Identifier: MIT
#include "tools/dump/sound_output.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cerrno>
#include <cstring>
#include <iterator>
#include <limits>
#include <string_view>

#include "tools/tool_error.h"

namespace tools {
namespace {

constexpr std::size_t kStreamBuffer = std::size_t{1} << 17;
constexpr uint32_t kBytesPerSample = 2;
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

}  // namespace

SoundOutput::SoundOutput(const std::string& path, Format format, uint64_t sample_count)
    : path_(path == "-" ? "standard output" : path),
      stream_(path == "-" ? stdout : std::fopen(path.c_str(), "wb")) {
    if (stream_ == nullptr) Fail(errno);
    std::setvbuf(stream_, nullptr, _IOFBF, kStreamBuffer);
    if (format == Format::Wav) WriteWavHeader(sample_count);
}

SoundOutput::~SoundOutput() {
    if (stream_ != nullptr && stream_ != stdout) std::fclose(stream_);
}

void SoundOutput::Write(std::span<const int16_t> samples) {
    if constexpr (std::endian::native == std::endian::little) {
        WriteBytes(samples.data(), samples.size_bytes());
    } else {
        for (const int16_t sample : samples) {
            const auto bits = static_cast<uint16_t>(sample);
            const std::array<uint8_t, 2> bytes = {static_cast<uint8_t>(bits),
                                                  static_cast<uint8_t>(bits >> 8)};
            WriteBytes(bytes.data(), bytes.size());
        }
    }
}

void SoundOutput::Close() {
    std::FILE* const stream = stream_;
    stream_ = nullptr;
    if ((stream == stdout ? std::fflush(stream) : std::fclose(stream)) != 0) Fail(errno);
}

void SoundOutput::WriteBytes(const void* bytes, std::size_t count) {
    if (std::fwrite(bytes, 1, count, stream_) != count) Fail(errno);
}

void SoundOutput::WriteWavHeader(uint64_t sample_count) {
    constexpr uint64_t kBeyondSize = kWavHeaderBytes - 8;
    // A message of more than 37 hours does not fit a WAV file's sizes; they then say "to the end".
    const uint64_t data_bytes = std::min<uint64_t>(sample_count * kBytesPerSample,
                                                   std::numeric_limits<uint32_t>::max() - kBeyondSize);
    HeaderWriter header;
    header.Tag("RIFF");
    header.Number(data_bytes + kBeyondSize, 4);
    header.Tag("WAVEfmt ");
    header.Number(16, 4);  // size of the format fields
    header.Number(kWavPcm, 2);
    header.Number(1, 2);  // channels
    header.Number(kSpeechSampleRate, 4);
    header.Number(kSpeechSampleRate * kBytesPerSample, 4);  // bytes per second
    header.Number(kBytesPerSample, 2);                      // bytes per sample of all channels
    header.Number(kBytesPerSample * 8, 2);
    header.Tag("data");
    header.Number(data_bytes, 4);
    WriteBytes(header.bytes().data(), header.bytes().size());
}

void SoundOutput::Fail(int reason) const {
    throw ToolError(path_ + ": cannot be written: " + std::strerror(reason));
}

}  // namespace tools
