// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <span>

#include "codec/message_format.h"
#include "codec/message_time.h"
#include "tools/atomic_file.h"

namespace tools {

inline constexpr std::size_t kSamplesPerBlock = std::size_t{kSpeechFrameSamples} * kFramesPerSpeechBlock;

// Pictures that stand in front of speech block `block` (from 0) or earlier: those first seen before the block
// ends. `rate` is 1 to 5.
constexpr int64_t PicturesBeforeBlock(int64_t block, int rate) {
    return PicturesDueAt((block + 1) * kFramesPerSpeechBlock - 1, rate);
}

// Speech blocks that last until each of `pictures` pictures has been seen for its whole period.
constexpr int64_t BlocksNeededFor(int64_t pictures, int rate) {
    return (PictureDueFrame(pictures, rate) + kFramesPerSpeechBlock - 1) / kFramesPerSpeechBlock;
}

// Writes the records of one message, in playing order. The file appears at Finish(), with the frame count
// of the blocks that were written. Every operation throws ToolError when the file cannot be written.
class MessageWriter {
public:
    // `rate` 0 makes a voice-only message, 1 to 5 one with that many pictures per second.
    MessageWriter(const std::filesystem::path& path, int rate);

    void AddSpeechBlock(std::span<const uint8_t, kSpeechBlockBytes> block);
    // `payload` holds at most kMaxPayloadBytes bytes.
    void AddPicture(std::span<const uint8_t> payload);
    void Finish();

    int64_t speech_blocks() const { return speech_blocks_; }

private:
    AtomicFile file_;
    int64_t speech_blocks_ = 0;
};

}  // namespace tools
