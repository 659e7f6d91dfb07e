#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <span>

#include "codec/message_format.h"
#include "tools/encode/atomic_file.h"

namespace tools {

inline constexpr std::size_t kSamplesPerBlock = std::size_t{kSpeechFrameSamples} * kFramesPerSpeechBlock;
inline constexpr uint64_t kBlockMilliseconds = kSamplesPerBlock * 1000 / kSpeechSampleRate;

// Pictures that belong in front of speech block `block` (from 0) or earlier: those whose time lies before
// the block's end. Picture k is shown at k × (1000 div rate) ms. `rate` is 1 to 5.
uint64_t PicturesDueBy(uint64_t block, int rate);

// Speech blocks that give each of `pictures` pictures its full time on screen.
uint64_t BlocksNeededFor(uint64_t pictures, int rate);

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

    uint64_t speech_blocks() const { return speech_blocks_; }

private:
    AtomicFile file_;
    uint64_t speech_blocks_ = 0;
};

}  // namespace tools
