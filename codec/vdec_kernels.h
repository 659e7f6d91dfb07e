// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

// The inner loops of the inverse transform and the colour conversion, once for each instruction set. All sets
// give the same results to the last bit: sums are formed in double precision in one fixed order, each result
// is rounded to single precision, and nothing is fused or reassociated.

// A line to be synthesised lies in two halves, low-pass s[0 … n - 1] and high-pass d[0 … n - 1]; its results
// 2k and 2k + 1 need s[k - 1 … k + 2] and d[k - 2 … k + 2], mirrored at the ends.
constexpr int kLowTaps = 4;
constexpr int kHighTaps = 5;

struct VdecKernels {
    const char* name;

    // One pair of rows of a vertical synthesis. low[i] is row k - 1 + i of the low-pass half, high[i] row
    // k - 2 + i of the high-pass half; `high` may be null for a high-pass half of zeros. `width` is a
    // multiple of 4.
    void (*synth_columns)(const double* const* low, const double* const* high, int width, double* even,
                          double* odd);

    // A horizontal synthesis of one line: 2 * half_width results from low and high, which both have two
    // mirrored values on either side; `high` may be null. `half_width` is a multiple of 4.
    void (*synth_rows)(const double* low, const double* high, int half_width, double* line);

    // The same into a row of a half plane. `peak`, which may be null, is raised to the largest magnitude of a
    // result where synth_samples asks for it.
    void (*synth_half_row)(const double* low, const double* high, int half_width, float* row, float* peak);

    // Two rows of kPictureWidth samples, truncated toward 0, low 16 bits kept: a vertical, then a horizontal
    // synthesis without high-pass halves. rows[i] is row k - 1 + i of a half plane, none of its values above
    // `peak`.
    void (*synth_samples)(const float* const* rows, float peak, int16_t* even, int16_t* odd);

    // Y, U, V samples to the bytes B, G, R. `width` is a multiple of 16.
    void (*bgr_row)(const int16_t* y, const int16_t* u, const int16_t* v, int width, uint8_t* bgr);
};

enum class VdecIsa { Scalar, Sse2, Avx2, Avx512, Neon };

// The kernels of an instruction set, or null where the program or the machine lacks it.
const VdecKernels* vdec_kernels_for(VdecIsa isa);

// The fastest that the machine has.
const VdecKernels& vdec_best_kernels();
