// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cmath>
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

template <class T>
void MirrorLowLine(T* values, int count) {
    for (const int outside : {-1, count, count + 1}) values[outside] = values[MirrorLow(outside, count)];
}

// A line's half with room for the mirrored values.
class LineHalf {
public:
    double* Values() { return m_values + kMargin; }

    const double* MirrorAsLow(int count) {
        double* values = Values();
        MirrorLowLine(values, count);
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
    alignas(64) double m_values[kMargin + kPictureWidth / 2 + kMargin];
};

// The subbands of a level, those of detail null where all their values are 0.
struct Subbands {
    int level;
    const double* ll;
    const double* hl = nullptr;
    const double* lh = nullptr;
    const double* hh = nullptr;
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

// One level of synthesis: the region from its subbands; columns first, then rows. put(low, high, y) is given
// the halves of row y.
template <class Put>
void SynthRegion(const VdecKernels& kernels, const Subbands& subbands, const Put& put) {
    const int width = LevelWidth(subbands.level);
    const int height = LevelHeight(subbands.level);
    LineHalf low_even, low_odd, high_even, high_odd;
    for (int k = 0; k < height; ++k) {
        SynthRowPair(kernels, subbands.ll, subbands.lh, width, height, k, low_even, low_odd);
        const double* high_even_line = nullptr;
        const double* high_odd_line = nullptr;
        if (subbands.hl != nullptr) {
            SynthRowPair(kernels, subbands.hl, subbands.hh, width, height, k, high_even, high_odd);
            high_even_line = high_even.MirrorAsHigh(width);
            high_odd_line = high_odd.MirrorAsHigh(width);
        }
        put(low_even.MirrorAsLow(width), high_even_line, 2 * k);
        put(low_odd.MirrorAsLow(width), high_odd_line, 2 * k + 1);
    }
}

void SynthLevel(const VdecKernels& kernels, const Subbands& subbands, double* region) {
    const int width = LevelWidth(subbands.level);
    SynthRegion(kernels, subbands, [&](const double* low, const double* high, int y) {
        kernels.synth_rows(low, high, width, region + 2 * width * y);
    });
}

// peak is raised to the largest magnitude; null where that is known.
void SynthHalfPlane(const VdecKernels& kernels, const Subbands& subbands, VdecHalfPlanes::Plane& plane,
                    float* peak) {
    SynthRegion(kernels, subbands, [&](const double* low, const double* high, int y) {
        kernels.synth_half_row(low, high, VdecHalfPlanes::kWidth / 2, plane.Row(y), peak);
        MirrorLowLine(plane.Row(y), VdecHalfPlanes::kWidth);
    });
}

void SynthChroma(const VdecKernels& kernels, const double* ll4, VdecHalfPlanes& planes,
                 VdecHalfPlanes::Plane& plane) {
    SynthLevel(kernels, {4, ll4}, planes.eighth.data());
    SynthLevel(kernels, {3, planes.eighth.data()}, planes.quarter.data());
    // The low-pass taps' magnitudes add up to less than 0.9654, with what rounding adds: without detail six
    // filterings leave less than 0.81 of the largest value.
    double peak = 0;
    for (std::size_t i = 0; i < LevelSize(4); ++i) peak = std::max(peak, std::abs(ll4[i]));
    plane.peak = static_cast<float>(0.81 * peak);
    SynthHalfPlane(kernels, {2, planes.quarter.data()}, plane, nullptr);
}

}  // namespace

void vdec_inverse_dwt(const VdecKernels& kernels, const VdecCoefficients& coefficients,
                      VdecHalfPlanes& planes) {
    const VdecCoefficients& c = coefficients;
    SynthLevel(kernels, {3, c.y_ll3.data(), c.y_hl3.data(), c.y_lh3.data(), c.y_hh3.data()},
               planes.quarter.data());
    planes.y.peak = 0;
    SynthHalfPlane(kernels, {2, planes.quarter.data(), c.y_hl2.data(), c.y_lh2.data()}, planes.y,
                   &planes.y.peak);
    SynthChroma(kernels, c.u_ll4.data(), planes, planes.u);
    SynthChroma(kernels, c.v_ll4.data(), planes, planes.v);
}

void vdec_to_bgr(const VdecKernels& kernels, const VdecHalfPlanes& planes, uint8_t* picture) {
    const VdecHalfPlanes::Plane* const sources[] = {&planes.y, &planes.u, &planes.v};
    alignas(64) int16_t samples[2][3][kPictureWidth];
    for (int k = 0; k < VdecHalfPlanes::kHeight; ++k) {
        for (int plane = 0; plane < 3; ++plane) {
            const float* rows[kLowTaps];
            for (int i = 0; i < kLowTaps; ++i)
                rows[i] = sources[plane]->Row(MirrorLow(k - 1 + i, VdecHalfPlanes::kHeight));
            kernels.synth_samples(rows, sources[plane]->peak, samples[0][plane], samples[1][plane]);
        }
        for (const auto& row : samples) {
            kernels.bgr_row(row[0], row[1], row[2], kPictureWidth, picture);
            picture += kPictureRowBytes;
        }
    }
}
