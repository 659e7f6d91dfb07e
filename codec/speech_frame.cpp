// SPDX-License-Identifier: MIT
#include "codec/speech_frame.h"

namespace {

// libgsm alternates between the two frames of a pair; here every frame is a first one.
void StartPair(gsm state) {
    int wav49 = 1;
    int index = 0;
    gsm_option(state, GSM_OPT_WAV49, &wav49);
    gsm_option(state, GSM_OPT_FRAME_INDEX, &index);
}

}  // namespace

// libgsm takes what it only reads through pointers to non-const.

void DecodeSpeechFrame(gsm decoder, const uint8_t* frame, int16_t* samples) {
    StartPair(decoder);
    gsm_decode(decoder, const_cast<gsm_byte*>(frame), samples);
}

void EncodeSpeechFrame(gsm encoder, const int16_t* samples, uint8_t* frame) {
    StartPair(encoder);
    gsm_encode(encoder, const_cast<gsm_signal*>(samples), frame);
    // The four bits that would start the pair's second frame.
    frame[kSpeechFrameBytes - 1] =
        static_cast<uint8_t>(gsm_option(encoder, GSM_OPT_FRAME_CHAIN, nullptr) & 0xF);
}
