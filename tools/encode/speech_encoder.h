// SPDX-License-Identifier: MIT
#pragma once

#include <gsm/gsm.h>

#include <cstdint>
#include <memory>
#include <random>
#include <span>

#include "codec/message_format.h"

namespace tools {

// GSM 06.10 full-rate encoder (libgsm) whose frames are as messages hold them. One state for all frames of
// a message, in order.
//
// Frames of digital silence that follow sound are replaced by noise of one step of the coder's 13-bit input:
// with nothing but zeros the coder shapes its own rounding noise into bursts that are well heard.
class SpeechEncoder {
public:
    // Throws std::bad_alloc when libgsm has no memory for its state.
    SpeechEncoder();

    // Encodes 20 ms: 160 samples at 8000 samples per second.
    void Encode(std::span<const int16_t, kSpeechFrameSamples> samples,
                std::span<uint8_t, kSpeechFrameBytes> frame);

private:
    struct Destroy {
        void operator()(gsm state) const { gsm_destroy(state); }
    };
    std::unique_ptr<gsm_state, Destroy> state_;
    std::minstd_rand noise_;  // the same for every message, so that equal input gives equal output
    bool sound_begun_ = false;
};

}  // namespace tools
