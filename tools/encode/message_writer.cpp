// SPDX-License-Identifier: MIT
#include "tools/encode/message_writer.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <limits>

namespace tools {
namespace {

constexpr long kFrameCountOffset = 9;

std::array<uint8_t, 4> LittleEndian(uint32_t value) {
    return {static_cast<uint8_t>(value), static_cast<uint8_t>(value >> 8), static_cast<uint8_t>(value >> 16),
            static_cast<uint8_t>(value >> 24)};
}

}  // namespace

MessageWriter::MessageWriter(const std::filesystem::path& path, int rate) : file_(path) {
    std::array<uint8_t, kMessageDataStart> header = {};
    std::copy(std::begin(kMessageMagic), std::end(kMessageMagic), header.begin());
    header[std::size(kMessageMagic)] = static_cast<uint8_t>(rate);
    file_.Write(header);
}

void MessageWriter::AddSpeechBlock(std::span<const uint8_t, kSpeechBlockBytes> block) {
    file_.Write(std::span(&kSpeechRecord, 1));
    file_.Write(block);
    ++speech_blocks_;
}

void MessageWriter::AddPicture(std::span<const uint8_t> payload) {
    const auto length = static_cast<uint32_t>(payload.size());
    const std::array<uint8_t, 3> head = {kVideoRecord, static_cast<uint8_t>(length),
                                         static_cast<uint8_t>(length >> 8)};
    file_.Write(head);
    file_.Write(payload);
}

void MessageWriter::Finish() {
    const int64_t frames = speech_blocks_ * kFramesPerSpeechBlock;
    if (frames > std::numeric_limits<uint32_t>::max()) throw ToolError("the sound is too long for a message");
    file_.Overwrite(kFrameCountOffset, LittleEndian(static_cast<uint32_t>(frames)));
    file_.Commit();
}

}  // namespace tools
