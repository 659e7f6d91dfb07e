// SPDX-License-Identifier: MIT
#include <algorithm>

#include "codec/vdec_stages.h"

namespace {

// Sums and products keep their low 16 bits.
int16_t Wrap(int value) {
    return static_cast<int16_t>(value);
}

// The LL subband of `level`. Every value is a difference from its left neighbour, the first of a row from the
// first of the row above.
void DequantiseApproximation(const int16_t* values, int level, int step, double* subband) {
    const int width = LevelWidth(level);
    int16_t first = 0;
    for (int y = 0; y < LevelHeight(level); ++y) {
        first = Wrap(first + *values);
        int16_t running = first;
        for (int x = 0; x < width; ++x) {
            if (x > 0) running = Wrap(running + values[x]);
            subband[x] = Wrap(running * step);
        }
        values += width;
        subband += width;
    }
}

// One block position's values in a detail subband of `level`; returns what follows them.
const int16_t* DequantiseBlock(const int16_t* values, int block, int level, int step, double* subband) {
    const int side = BlockSide(level);
    const int width = LevelWidth(level);
    double* corner = subband + width * side * (block / kBlockColumns) + side * (block % kBlockColumns);
    for (int y = 0; y < side; ++y, corner += width) {
        for (int x = 0; x < side; ++x) corner[x] = Wrap(*values++ * step);
    }
    return values;
}

}  // namespace

void vdec_reconstruct(const VdecSymbols& symbols, int quality, VdecCoefficients& coefficients) {
    VdecCoefficients& c = coefficients;
    const uint16_t* steps = quant_steps[quality];
    const int16_t* values = symbols.values.data();
    DequantiseApproximation(values + kYApproxStart, kLumaLevels, steps[kStepY], c.y_ll3.data());
    DequantiseApproximation(values + kUApproxStart, kChromaLevels, steps[kStepU], c.u_ll4.data());
    DequantiseApproximation(values + kVApproxStart, kChromaLevels, steps[kStepV], c.v_ll4.data());

    c.y_hl3.fill(0);
    c.y_lh3.fill(0);
    c.y_hh3.fill(0);
    c.y_hl2.fill(0);
    c.y_lh2.fill(0);
    const int16_t* coarse = values + kCoarseStart;
    const int16_t* fine = values + kFineStart;
    for (int block = 0; block < kBlockCount; ++block) {
        if (symbols.head.IsSkipped(block)) continue;
        coarse = DequantiseBlock(coarse, block, kCoarseLevel, steps[kStepCoarse], c.y_hl3.data());
        fine = DequantiseBlock(fine, block, kFineLevel, steps[kStepFine], c.y_hl2.data());
        coarse = DequantiseBlock(coarse, block, kCoarseLevel, steps[kStepCoarse], c.y_lh3.data());
        fine = DequantiseBlock(fine, block, kFineLevel, steps[kStepFine], c.y_lh2.data());
        coarse = DequantiseBlock(coarse, block, kCoarseLevel, steps[kStepCoarseDiagonal], c.y_hh3.data());
    }
}
