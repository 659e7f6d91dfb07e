#pragma once

#include <cstddef>
#include <cstdint>

#include "codec/picture_geometry.h"

// The video decoder: one compressed picture in, one 24-bit picture out. It has one state for the process,
// without a lock: the caller sees to it that no two of these functions run at the same time.
// docs/message-format.md describes the payload.

// Allocates everything that decoding needs, builds the code trees and sets the quality level to 3. On a ready
// decoder it starts anew. When memory runs out the decoder is left not initialised.
void vdec_init();

// Chooses the quantiser steps, 0 (coarse) to 3 (fine). False, with nothing changed, when the decoder is not
// initialised or the level is out of range.
bool vdec_set_quality(signed char level);

// Decodes `length` bytes of payload into `picture` (kPictureBytes bytes, not null). Any payload gives a
// picture: values that the payload does not reach are 0. False, with nothing written, when the decoder is not
// initialised. Allocates nothing. `payload` may be null when `length` is 0.
bool vdec_decode(const uint8_t* payload, size_t length, uint8_t* picture);

// Releases everything that vdec_init made. Does nothing when the decoder is not initialised.
void vdec_free();
