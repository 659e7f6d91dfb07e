// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>

#include "codec/picture_geometry.h"

// The video decoder: one compressed picture in, one 24-bit picture out. docs/message-format.md describes the
// payload.

// A decoder of one's own: different ones may be at work at the same time, each on one thread at a time.
struct VdecDecoder;

// A new decoder with everything allocated that decoding needs, at quality level 3. The caller passes it to
// vdec_destroy. Null when memory runs out.
VdecDecoder* vdec_create();
void vdec_destroy(VdecDecoder* decoder);  // null is allowed

// Chooses the quantiser steps, 0 (coarse) to 3 (fine). False, with nothing changed, when the level is out of
// range.
bool vdec_set_quality(VdecDecoder& decoder, signed char level);

// Decodes `length` bytes of payload into `picture` (kPictureBytes bytes, not null). Any payload decodes to a
// picture: values that the payload does not reach are 0. Allocates nothing. `payload` may be null when
// `length` is 0.
void vdec_decode(VdecDecoder& decoder, const uint8_t* payload, size_t length, uint8_t* picture);

// The same on one decoder for the whole process, without a lock: the caller sees to it that no two of these
// functions run at the same time.

// Creates the decoder, anew where there is one. When memory runs out the decoder is left not initialised.
void vdec_init();
// False as above, or when the decoder is not initialised.
bool vdec_set_quality(signed char level);
// False, with nothing written, when the decoder is not initialised.
bool vdec_decode(const uint8_t* payload, size_t length, uint8_t* picture);
// Destroys the decoder. Does nothing when it is not initialised.
void vdec_free();
