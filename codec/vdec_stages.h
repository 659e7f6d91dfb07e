// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "codec/huff_lookup.h"
#include "codec/vdec_kernels.h"
#include "codec/vdec_tables.h"

// The stages of vdec_decode, on data of their own so that each can be run and looked at alone. None
// allocates, none keeps anything between calls.

// Code trees and their look-up tables, by group.
struct VdecCodes {
    std::array<HuffTree, kGroupCount> trees;
    std::array<HuffLookup, kGroupCount> lookups;
};

// False when memory runs out.
bool vdec_build_codes(VdecCodes& codes);

// What stands before a payload's codes. Of a payload without its whole head, missing flag bytes count as set
// and counts that are not there whole as 0.
struct VdecHead {
    int32_t coarse_count;  // as the payload has them, in range or not
    int32_t fine_count;
    std::array<uint8_t, kSkipFlagBytes> skip_flags;

    bool IsSkipped(int block) const {
        return ((skip_flags[static_cast<size_t>(block) / 8] >> (block % 8)) & 1) != 0;
    }
};
VdecHead vdec_read_head(const uint8_t* payload, size_t length);

// All that a payload says.
struct VdecSymbols {
    VdecHead head;
    std::array<int16_t, kValueCount + kHuffValueSlack> values;  // by vdec_groups; the rest is undefined
};

// Stage 1. Values that the payload does not give, by its counts or by its length, are 0; those that have no
// room in their group are read and dropped.
void vdec_read_symbols(const VdecCodes& codes, const uint8_t* payload, size_t length, VdecSymbols& symbols);

// Wavelet coefficients: the subbands that a payload can reach, named by plane, kind and level, each row after
// row without gaps. All others are 0. Coefficients and samples are single-precision values, kept as doubles
// because all sums are formed in double precision.
struct VdecCoefficients {
    template <int Level>
    using Subband = std::array<double, LevelSize(Level)>;

    alignas(64) Subband<3> y_ll3;
    alignas(64) Subband<3> y_hl3;
    alignas(64) Subband<3> y_lh3;
    alignas(64) Subband<3> y_hh3;
    alignas(64) Subband<2> y_hl2;
    alignas(64) Subband<2> y_lh2;
    alignas(64) Subband<4> u_ll4;
    alignas(64) Subband<4> v_ll4;
};

// Stage 2, with the quantiser steps of `quality` (0 to 3).
void vdec_reconstruct(const VdecSymbols& symbols, int quality, VdecCoefficients& coefficients);

// The three planes at half their width and height: what is left to do is one level without detail.
struct VdecHalfPlanes {
    static constexpr int kWidth = LevelWidth(1);
    static constexpr int kHeight = LevelHeight(1);
    static constexpr int kMargin = 8;
    static constexpr int kStride = kMargin + kWidth + kMargin;
    // Rows with mirrored values on both sides.
    struct Plane {
        float* Row(int row) { return values.data() + kStride * row + kMargin; }
        const float* Row(int row) const { return values.data() + kStride * row + kMargin; }

        float peak;  // no value's magnitude is above it, with kernels that ask for it
        alignas(64) std::array<float, size_t{kStride}* kHeight> values = {};
    };

    Plane y;
    Plane u;
    Plane v;
    // The levels on the way, for one plane at a time.
    alignas(64) std::array<double, LevelSize(2)> quarter;
    alignas(64) std::array<double, LevelSize(3)> eighth;
};

// Stage 3: the inverse transform up to half size.
void vdec_inverse_dwt(const VdecKernels& kernels, const VdecCoefficients& coefficients,
                      VdecHalfPlanes& planes);

// Stage 4: the last level of the transform, two rows at a time, straight into colour conversion. The full
// planes are never stored.
void vdec_to_bgr(const VdecKernels& kernels, const VdecHalfPlanes& planes, uint8_t* picture);
