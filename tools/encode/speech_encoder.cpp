// SPDX-License-Identifier: MIT
#include "tools/encode/speech_encoder.h"

#include <algorithm>
#include <array>
#include <new>

#include "codec/speech_frame.h"

namespace tools {
namespace {

constexpr int kNoise = 8;

}  // namespace

SpeechEncoder::SpeechEncoder() : state_(gsm_create()) {
    if (!state_) throw std::bad_alloc();
}

void SpeechEncoder::Encode(std::span<const int16_t, kSpeechFrameSamples> samples,
                           std::span<uint8_t, kSpeechFrameBytes> frame) {
    std::array<gsm_signal, kSpeechFrameSamples> input;
    std::copy(samples.begin(), samples.end(), input.begin());
    const bool silent =
        std::all_of(input.begin(), input.end(), [](gsm_signal sample) { return sample == 0; });
    if (silent && sound_begun_) {
        for (gsm_signal& sample : input) {
            sample = static_cast<gsm_signal>(static_cast<int>(noise_() % (2 * kNoise + 1)) - kNoise);
        }
    }
    sound_begun_ = sound_begun_ || !silent;
    EncodeSpeechFrame(state_.get(), input.data(), frame.data());
}

}  // namespace tools
