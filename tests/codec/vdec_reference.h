// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "codec/vdec_stages.h"

// The decoder's reference implementation: three full planes of floats, one line at a time
// through a work line, one pixel at a time. What the decoder does faster must come out the same.

struct ReferencePlanes {
    std::array<std::vector<float>, 3> planes;  // Y, U, V: 240 rows of 320
    ReferencePlanes();
};

void ReferenceReconstruct(const VdecSymbols& symbols, int quality, ReferencePlanes& planes);
// Down to `last_region`; 0 rebuilds the whole planes.
void ReferenceInverseDwt(ReferencePlanes& planes, int last_region = 0);
void ReferenceToBgr(const ReferencePlanes& planes, uint8_t* picture);
