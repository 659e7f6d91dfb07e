// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>

namespace tools {

// A sound file of any format that libsndfile reads, as 8000 samples per second, mono, 16 bit. Channels are
// averaged; other rates go through libsamplerate's band-limited conversion; what exceeds the 16-bit range
// is limited to it. Operations throw ToolError naming the file.
class SoundSource {
public:
    explicit SoundSource(const std::string& path);
    ~SoundSource();

    // Fills `samples` from where the last call ended; a smaller result than asked for is the end.
    std::size_t Read(std::span<int16_t> samples);

    // Length in seconds as the file's header tells it, 0 when unknown. For showing progress.
    double seconds() const;

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace tools
