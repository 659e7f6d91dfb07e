// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "tools/export/output_file.h"

namespace tools {

// Takes decoded speech: 16-bit samples, 8000 a second, one channel. Every operation throws ToolError when
// they cannot be written.
class SoundOutput {
public:
    virtual ~SoundOutput() = default;
    virtual void Write(std::span<const int16_t> samples) = 0;
    // Everything has been written; the file is whole.
    virtual void Finish() = 0;
};

// Signed 16-bit samples, little-endian.
class RawSoundOutput : public SoundOutput {
public:
    // `file` outlives this.
    explicit RawSoundOutput(OutputFile& file) : file_(file) {}

    void Write(std::span<const int16_t> samples) override;
    void Finish() override { file_.Finish(); }

protected:
    OutputFile& file() { return file_; }

private:
    OutputFile& file_;
};

// The same as a WAV file.
class WavSoundOutput : public RawSoundOutput {
public:
    // `sample_count` is how many samples will follow, if that is known: a pipe's header says so at once, or
    // else "to the end".
    WavSoundOutput(OutputFile& file, std::optional<uint64_t> sample_count);

    void Write(std::span<const int16_t> samples) override;
    void Finish() override;

private:
    uint64_t written_ = 0;
};

}  // namespace tools
