#include <algorithm>

#include "codec/vdec_stages.h"

namespace {

// Sums and products keep their low 16 bits.
int16_t Wrap(int value) {
    return static_cast<int16_t>(value);
}

// Every value is a difference from its left neighbour, the first of a row from the first of the row above.
void ReadApproximation(const int16_t* values, int width, int height, int step, double* band) {
    int16_t first = 0;
    for (int y = 0; y < height; ++y) {
        first = Wrap(first + *values);
        int16_t running = first;
        for (int x = 0; x < width; ++x) {
            if (x > 0) running = Wrap(running + values[x]);
            band[x] = Wrap(running * step);
        }
        values += width;
        band += width;
    }
}

// A size x size group of detail; gives what follows its values.
const int16_t* ReadGroup(const int16_t* values, int size, int step, double* corner, int stride) {
    for (int y = 0; y < size; ++y, corner += stride) {
        for (int x = 0; x < size; ++x) corner[x] = Wrap(*values++ * step);
    }
    return values;
}

}  // namespace

void vdec_reconstruct(const VdecSymbols& symbols, int quality, VdecCoefficients& coefficients) {
    const uint16_t* steps = quant_steps[quality];
    const int16_t* values = symbols.values.data();
    ReadApproximation(values + kYApproxStart, 40, 30, steps[kStepY], coefficients.y_approx.data());
    ReadApproximation(values + kUApproxStart, 20, 15, steps[kStepU], coefficients.u_approx.data());
    ReadApproximation(values + kVApproxStart, 20, 15, steps[kStepV], coefficients.v_approx.data());

    coefficients.coarse_right.fill(0);
    coefficients.coarse_below.fill(0);
    coefficients.coarse_diagonal.fill(0);
    coefficients.fine_right.fill(0);
    coefficients.fine_below.fill(0);
    const int16_t* coarse = values + kCoarseStart;
    const int16_t* fine = values + kFineStart;
    for (int block = 0; block < kBlockCount; ++block) {
        if (symbols.head.IsSkipped(block)) continue;
        const int column = block % kBlockColumns;
        const int row = block / kBlockColumns;
        const int coarse_at = 40 * 2 * row + 2 * column;
        const int fine_at = 80 * 4 * row + 4 * column;
        coarse = ReadGroup(coarse, 2, steps[kStepCoarse], coefficients.coarse_right.data() + coarse_at, 40);
        fine = ReadGroup(fine, 4, steps[kStepFine], coefficients.fine_right.data() + fine_at, 80);
        coarse = ReadGroup(coarse, 2, steps[kStepCoarse], coefficients.coarse_below.data() + coarse_at, 40);
        fine = ReadGroup(fine, 4, steps[kStepFine], coefficients.fine_below.data() + fine_at, 80);
        coarse = ReadGroup(coarse, 2, steps[kStepCoarseDiagonal],
                           coefficients.coarse_diagonal.data() + coarse_at, 40);
    }
}
