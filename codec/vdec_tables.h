// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>

#include "codec/picture_geometry.h"

// The constants of the picture format, shared by the decoder and by whoever writes payloads.

// A payload: a 32-bit header word, 38 bytes of skip flags, then the code bits.
constexpr size_t kSkipFlagBytes = 38;
constexpr size_t kPayloadHeadBytes = 4 + kSkipFlagBytes;

// The skip flag of block position b is bit b mod 8 of flag byte b div 8: set when the position carries no
// detail.

// The value store: the approximation bands of Y, U and V, then the coarse and the fine detail.
constexpr size_t kYApproxStart = 0;
constexpr size_t kUApproxStart = kYApproxStart + LevelSize(kLumaLevels);
constexpr size_t kVApproxStart = kUApproxStart + LevelSize(kChromaLevels);
constexpr size_t kCoarseStart = kVApproxStart + LevelSize(kChromaLevels);
constexpr size_t kFineStart = kCoarseStart + size_t{kBlockCount} * kCoarsePerBlock;
constexpr size_t kValueCount = kFineStart + size_t{kBlockCount} * kFinePerBlock;
static_assert(kValueCount == 15000);

// A symbol group: the symbols of one alphabet, in the order in which they stand in the payload.
enum VdecGroup { kYApprox, kUApprox, kVApprox, kCoarseDetail, kFineDetail, kGroupCount };

struct VdecGroupInfo {
    const uint32_t* counts;  // alphabet_size entries, none 0: what the group's code tree is built from
    uint32_t alphabet_size;
    int32_t sign_point;  // symbols up to here stand for themselves, those above for sign_point - symbol
    size_t first_value;  // where the group lies in the value store
    size_t value_count;  // how many values it has room for
};
extern const VdecGroupInfo vdec_groups[kGroupCount];

extern const uint32_t freq_y_approx[600];
extern const uint32_t freq_u_approx[300];
extern const uint32_t freq_v_approx[325];
extern const uint32_t freq_coarse_detail[160];
extern const uint32_t freq_fine_detail[60];

// The value of a symbol of a group.
constexpr int32_t vdec_symbol_value(int32_t symbol, int32_t sign_point) {
    return symbol <= sign_point ? symbol : sign_point - symbol;
}

// Quantiser steps by quality level and band.
constexpr int kQualityLevels = 4;
enum VdecStep { kStepY, kStepU, kStepV, kStepCoarse, kStepCoarseDiagonal, kStepFine, kStepCount };
constexpr uint16_t quant_steps[kQualityLevels][kStepCount] = {
    {38, 44, 44, 48, 52, 60},
    {28, 34, 34, 38, 42, 50},
    {18, 24, 24, 28, 32, 40},
    {8, 14, 14, 18, 22, 30},
};

// Synthesis filters of the biorthogonal 9/7 wavelet (Cohen, Daubechies and Feauveau, 1992), both low-pass
// filters with a gain of the square root of 2 at frequency 0. e: even outputs, o: odd outputs, by distance.
// e1 and e3 are subtracted. The single-precision values are part of the format.
struct SynthTaps {
    float e0, e1, e2, e3;
    float o0, o1, o2, o3, o4;
};
constexpr SynthTaps synth_taps = {
    0.788485587F,  0.377402842F, -0.0406894162F, -0.023849465F,   // e0 to e3
    0.852698684F,  0.418092281F, -0.110624403F,  -0.0645388812F,  // o0 to o3
    0.0378284566F,                                                // o4
};
