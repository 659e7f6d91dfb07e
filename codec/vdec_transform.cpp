#include <initializer_list>

#include "codec/vdec_stages.h"

namespace {

// The values of a line that lie outside it are mirrored about the first and the last value of the interleaved
// line, which is low-pass at its start and high-pass at its end. In either half that leads to these places.
int MirrorLow(int index, int count) {
    if (index < 0) return -index;
    return index < count ? index : 2 * count - 1 - index;
}

int MirrorHigh(int index, int count) {
    if (index < 0) return -1 - index;
    return index < count ? index : 2 * count - 2 - index;
}

// A line's half with room for the mirrored values.
class LineHalf {
public:
    double* Values() { return m_values + kMargin; }

    const double* MirrorAsLow(int count) {
        double* values = Values();
        for (const int outside : {-1, count, count + 1}) values[outside] = values[MirrorLow(outside, count)];
        return values;
    }
    const double* MirrorAsHigh(int count) {
        double* values = Values();
        for (const int outside : {-2, -1, count, count + 1})
            values[outside] = values[MirrorHigh(outside, count)];
        return values;
    }

private:
    static constexpr int kMargin = 8;  // keeps the values at the start of a cache line
    alignas(64) double m_values[kMargin + kPlaneWidth / 2 + kMargin];
};

// The four quarters of a region, each width x height; null where all values are 0.
struct Quarters {
    int width;
    int height;
    const double* low_low;
    const double* right;
    const double* below;
    const double* diagonal;
};

// Rows 2k and 2k + 1 of a vertical synthesis of one half of a region.
void SynthRowPair(const VdecKernels& kernels, const double* low, const double* high, int width, int height,
                  int k, LineHalf& even, LineHalf& odd) {
    const double* low_rows[kLowTaps];
    for (int i = 0; i < kLowTaps; ++i) low_rows[i] = low + width * MirrorLow(k - 1 + i, height);
    const double* high_rows[kHighTaps];
    if (high != nullptr) {
        for (int i = 0; i < kHighTaps; ++i) high_rows[i] = high + width * MirrorHigh(k - 2 + i, height);
    }
    kernels.synth_columns(low_rows, high != nullptr ? high_rows : nullptr, width, even.Values(),
                          odd.Values());
}

// One level: the region, 2 * width x 2 * height, from its quarters; columns first, then rows.
void SynthLevel(const VdecKernels& kernels, const Quarters& quarters, double* region) {
    const int width = quarters.width;
    LineHalf low_even, low_odd, high_even, high_odd;
    for (int k = 0; k < quarters.height; ++k) {
        SynthRowPair(kernels, quarters.low_low, quarters.below, width, quarters.height, k, low_even, low_odd);
        const double* high_even_line = nullptr;
        const double* high_odd_line = nullptr;
        if (quarters.right != nullptr) {
            SynthRowPair(kernels, quarters.right, quarters.diagonal, width, quarters.height, k, high_even,
                         high_odd);
            high_even_line = high_even.MirrorAsHigh(width);
            high_odd_line = high_odd.MirrorAsHigh(width);
        }
        double* row = region + 4 * width * k;
        kernels.synth_rows(low_even.MirrorAsLow(width), high_even_line, width, row);
        kernels.synth_rows(low_odd.MirrorAsLow(width), high_odd_line, width, row + 2 * width);
    }
}

void SynthChroma(const VdecKernels& kernels, const double* approx, VdecHalfPlanes& planes,
                 VdecHalfPlanes::Plane& plane) {
    SynthLevel(kernels, {20, 15, approx, nullptr, nullptr, nullptr}, planes.eighth.data());
    SynthLevel(kernels, {40, 30, planes.eighth.data(), nullptr, nullptr, nullptr}, planes.quarter.data());
    SynthLevel(kernels, {80, 60, planes.quarter.data(), nullptr, nullptr, nullptr}, plane.data());
}

}  // namespace

void vdec_inverse_dwt(const VdecKernels& kernels, const VdecCoefficients& coefficients,
                      VdecHalfPlanes& planes) {
    SynthLevel(kernels,
               {40, 30, coefficients.y_approx.data(), coefficients.coarse_right.data(),
                coefficients.coarse_below.data(), coefficients.coarse_diagonal.data()},
               planes.quarter.data());
    SynthLevel(kernels,
               {80, 60, planes.quarter.data(), coefficients.fine_right.data(), coefficients.fine_below.data(),
                nullptr},
               planes.y.data());
    SynthChroma(kernels, coefficients.u_approx.data(), planes, planes.u);
    SynthChroma(kernels, coefficients.v_approx.data(), planes, planes.v);
}

void vdec_to_bgr(const VdecKernels& kernels, const VdecHalfPlanes& planes, uint8_t* picture) {
    constexpr int kHalfWidth = VdecHalfPlanes::kWidth;
    const VdecHalfPlanes::Plane* const sources[] = {&planes.y, &planes.u, &planes.v};
    LineHalf even, odd;
    alignas(64) int16_t samples[2][3][kPlaneWidth];
    for (int k = 0; k < VdecHalfPlanes::kHeight; ++k) {
        for (int plane = 0; plane < 3; ++plane) {
            SynthRowPair(kernels, sources[plane]->data(), nullptr, kHalfWidth, VdecHalfPlanes::kHeight, k,
                         even, odd);
            kernels.synth_samples(even.MirrorAsLow(kHalfWidth), kHalfWidth, samples[0][plane]);
            kernels.synth_samples(odd.MirrorAsLow(kHalfWidth), kHalfWidth, samples[1][plane]);
        }
        for (const auto& row : samples) {
            kernels.bgr_row(row[0], row[1], row[2], kPlaneWidth, picture);
            picture += 3 * kPlaneWidth;
        }
    }
}
