// SPDX-License-Identifier: MIT
#include "tools/dump/thumbnail_levels.h"

#include <fcntl.h>
#include <gsm/gsm.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <new>
#include <span>

#include "codec/message_format.h"
#include "codec/speech_frame.h"

namespace tools {
namespace {

constexpr uint64_t kMostBlocks = 128;
constexpr std::size_t kRecordBytes = 1 + kSpeechBlockBytes;
// The decoder predicts from what came before; after a jump its first frames are too loud or too quiet.
constexpr int kFramesToSettle = 2;

// The speech block that begins the first run of speech records in the window; empty where there is none.
// Foreign bytes between records can have moved the records from where their count alone puts them.
std::span<const uint8_t> FindBlock(std::span<const uint8_t> window) {
    const auto may_begin = [&](std::size_t at) { return at >= window.size() || window[at] == kSpeechRecord; };
    for (std::size_t at = 0; at + kRecordBytes <= window.size() && at < kRecordBytes; ++at) {
        if (may_begin(at) && may_begin(at + kRecordBytes) && may_begin(at + 2 * kRecordBytes)) {
            return window.subspan(at + 1, kSpeechBlockBytes);
        }
    }
    return {};
}

float Peak(std::span<const int16_t> samples) {
    int peak = 0;
    for (const int sample : samples) peak = std::max(peak, std::abs(sample));
    return static_cast<float>(peak) / 32768.0F;
}

}  // namespace

std::vector<float> SampleLevels(int descriptor) {
    struct Destroy {
        void operator()(gsm state) const { gsm_destroy(state); }
    };
    struct stat status {};
    if (fstat(descriptor, &status) != 0 || status.st_size <= kMessageDataStart) return {};
    const std::unique_ptr<gsm_state, Destroy> decoder(gsm_create());
    if (!decoder) throw std::bad_alloc();

    const uint64_t blocks = (static_cast<uint64_t>(status.st_size) - kMessageDataStart) / kRecordBytes;
    const uint64_t places = std::min(blocks, kMostBlocks);
    std::array<uint8_t, 3 * kRecordBytes> window;
    const auto offset_of = [&](uint64_t place) {
        return static_cast<off_t>(kMessageDataStart + place * blocks / places * kRecordBytes);
    };
    const bool jumps = blocks > places;
    if (jumps) {
        // The system may fetch all places at once, and nothing between them.
        posix_fadvise(descriptor, 0, 0, POSIX_FADV_RANDOM);
        for (uint64_t place = 0; place < places; ++place) {
            posix_fadvise(descriptor, offset_of(place), window.size(), POSIX_FADV_WILLNEED);
        }
    }
    std::vector<float> levels;
    levels.reserve(static_cast<std::size_t>(places) * kFramesPerSpeechBlock);
    std::array<int16_t, kSpeechFrameSamples> samples;
    for (uint64_t place = 0; place < places; ++place) {
        const ssize_t count = pread(descriptor, window.data(), window.size(), offset_of(place));
        if (count <= 0) continue;
        const auto block = FindBlock(std::span(window).first(static_cast<std::size_t>(count)));
        for (int frame = 0; frame < kFramesPerSpeechBlock && !block.empty(); ++frame) {
            DecodeSpeechFrame(decoder.get(),
                              block.data() + static_cast<std::size_t>(frame) * kSpeechFrameBytes,
                              samples.data());
            if (!jumps || frame >= kFramesToSettle) levels.push_back(Peak(samples));
        }
    }
    return levels;
}

std::vector<float> LoudestPerPart(const std::vector<float>& levels, std::size_t parts) {
    std::vector<float> loudest;
    for (std::size_t part = 0; part < parts && !levels.empty(); ++part) {
        const std::size_t begin = part * levels.size() / parts;
        const std::size_t end = std::max(begin + 1, (part + 1) * levels.size() / parts);
        const auto at = [&](std::size_t index) {
            return levels.begin() + static_cast<std::ptrdiff_t>(index);
        };
        loudest.push_back(*std::max_element(at(begin), at(end)));
    }
    return loudest;
}

}  // namespace tools
