#pragma once

#include <gsm/gsm.h>

#include <cstdint>

#include "codec/message_format.h"

// A message keeps the 76 parameters of a GSM 06.10 frame in 260 bits, each parameter's least significant bit
// first, counted from the least significant bit of byte 0. libgsm's own layout puts a marker nibble 0xD
// before them and each parameter's most significant bit first. Both have the same order of parameters and 33
// bytes.

// From a message's frame to libgsm's layout. The frame's last four bits carry nothing and are ignored.
// `frame` and `gsm_layout` hold kSpeechFrameBytes each and do not overlap.
void RepackSpeechFrameForGsm(const uint8_t* frame, gsm_byte* gsm_layout);

// From libgsm's layout (its marker is not looked at) to a message's frame; the last four bits become 0.
void RepackSpeechFrameFromGsm(const gsm_byte* gsm_layout, uint8_t* frame);

// Decodes one frame into kSpeechFrameSamples samples. A message is decoded with one `decoder` (from
// gsm_create), frame after frame. Any bits decode. No state but the decoder's is touched.
void DecodeSpeechFrame(gsm decoder, const uint8_t* frame, int16_t* samples);
