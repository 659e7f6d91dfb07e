// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <cstdio>
#include <span>
#include <string>

#include "codec/message_format.h"

namespace tools {

// Where decoded speech goes: signed 16-bit samples, little-endian, 8000 a second, one channel; as they are,
// or as a WAV file. Every operation throws ToolError when the file cannot be written.
class SoundOutput {
public:
    enum class Format { Raw, Wav };

    // `path` "-" is standard output. `sample_count` is how many samples will follow; a WAV header says so
    // at once, so that the output can be a pipe.
    SoundOutput(const std::string& path, Format format, uint64_t sample_count);
    ~SoundOutput();
    SoundOutput(const SoundOutput&) = delete;
    SoundOutput& operator=(const SoundOutput&) = delete;

    void Write(std::span<const int16_t> samples);
    // Everything has been written.
    void Close();

private:
    void WriteBytes(const void* bytes, std::size_t count);
    void WriteWavHeader(uint64_t sample_count);
    [[noreturn]] void Fail(int reason) const;

    std::string path_;
    std::FILE* stream_ = nullptr;
};

}  // namespace tools
