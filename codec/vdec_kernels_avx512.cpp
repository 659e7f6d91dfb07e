// SPDX-License-Identifier: MIT
// The levels before the last one, eight values at a time; the rest as with AVX2.
#include "codec/vdec_kernels_avx512.h"

#include "codec/vdec_kernels_avx2.h"
#include "codec/vdec_synth.h"
#include "codec/vdec_vector_avx512.h"

namespace {

// The smallest subband's rows are no multiple of eight.
bool Fits(int width) {
    return width % Avx512Vector::kLanes == 0;
}

void SynthColumns(const double* const* low, const double* const* high, int width, double* even, double* odd) {
    const auto synth = Fits(width) ? vdec_synth_columns<Avx512Vector> : vdec_kernels_avx2.synth_columns;
    synth(low, high, width, even, odd);
}

void SynthRows(const double* low, const double* high, int half_width, double* line) {
    const auto synth =
        Fits(half_width) ? vdec_synth_rows<Avx512Vector, double> : vdec_kernels_avx2.synth_rows;
    synth(low, high, half_width, line);
}

void SynthHalfRow(const double* low, const double* high, int half_width, float* row, float* peak) {
    vdec_synth_rows<Avx512Vector>(low, high, half_width, row);
    if (peak != nullptr) vdec_raise_peak_avx2(row, 2 * half_width, *peak);
}

void SynthSamples(const float* const* rows, float peak, int16_t* even, int16_t* odd) {
    vdec_kernels_avx2.synth_samples(rows, peak, even, odd);
}

void BgrRow(const int16_t* y, const int16_t* u, const int16_t* v, int width, uint8_t* bgr) {
    vdec_kernels_avx2.bgr_row(y, u, v, width, bgr);
}

}  // namespace

const VdecKernels vdec_kernels_avx512 = {
    "AVX-512", SynthColumns, SynthRows, SynthHalfRow, SynthSamples, BgrRow,
};
