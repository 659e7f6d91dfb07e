// SPDX-License-Identifier: MIT
#include "tests/codec/vdec_reference.h"

#include <algorithm>

namespace {

constexpr int kStride = kPictureWidth;
constexpr int kMirrored = 4;

int16_t Low16(int value) {
    return static_cast<int16_t>(value);
}

// Interleaves, mirrors and filters in place. `stride` is the distance between two values of the line.
void SynthLine(float* line, int length, int stride) {
    float work[kPictureWidth + 2 * kMirrored];
    float* z = work + kMirrored;
    const int half = length / 2;
    for (int k = 0; k < half; ++k) {
        z[2 * k] = line[k * stride];
        z[2 * k + 1] = line[(half + k) * stride];
    }
    for (int i = 1; i <= 3; ++i) z[-i] = z[i];
    for (int i = 0; i <= 3; ++i) z[length + i] = z[length - 2 - i];

    const SynthTaps& t = synth_taps;
    const auto sum = [&](int a, int b) { return double{z[a]} + double{z[b]}; };
    for (int k = 0; k < half; ++k) {
        const int n = 2 * k;
        double even = double{t.e0} * double{z[n]} - double{t.e1} * sum(n + 1, n - 1);
        even = even + double{t.e2} * sum(n + 2, n - 2);
        even = even - double{t.e3} * sum(n + 3, n - 3);
        double odd = double{t.o4} * sum(n + 5, n - 3) + double{t.o3} * sum(n + 4, n - 2);
        odd = odd + double{t.o1} * sum(n, n + 2);
        odd = odd + double{t.o2} * sum(n + 3, n - 1);
        odd = odd + double{t.o0} * double{z[n + 1]};
        line[n * stride] = static_cast<float>(even);
        line[(n + 1) * stride] = static_cast<float>(odd);
    }
}

void FillGroup(float* plane, int x, int y, int size, int step, const int16_t*& values) {
    for (int row = 0; row < size; ++row) {
        for (int column = 0; column < size; ++column) {
            plane[(y + row) * kStride + x + column] = Low16(*values++ * step);
        }
    }
}

uint8_t Clamp(int value) {
    return static_cast<uint8_t>(std::clamp<int>(Low16(value), 0, 255));
}

}  // namespace

ReferencePlanes::ReferencePlanes() {
    for (auto& plane : planes) plane.resize(size_t{kPictureWidth} * kPictureHeight);
}

void ReferenceReconstruct(const VdecSymbols& symbols, int quality, ReferencePlanes& planes) {
    const int16_t* values = symbols.values.data();
    for (size_t p = 0; p < 3; ++p) {
        std::vector<float>& plane = planes.planes[p];
        std::fill(plane.begin(), plane.end(), 0.0F);
        int16_t first = 0;
        for (int y = 0; y < (p == 0 ? 30 : 15); ++y) {
            first = Low16(first + *values++);
            int16_t running = first;
            plane[static_cast<size_t>(y * kStride)] = Low16(running * quant_steps[quality][p]);
            for (int x = 1; x < (p == 0 ? 40 : 20); ++x) {
                running = Low16(running + *values++);
                plane[static_cast<size_t>(y * kStride + x)] = Low16(running * quant_steps[quality][p]);
            }
        }
    }

    float* luma = planes.planes[0].data();
    const int16_t* coarse = symbols.values.data() + kCoarseStart;
    const int16_t* fine = symbols.values.data() + kFineStart;
    const uint16_t* steps = quant_steps[quality];
    for (int by = 0; by < kBlockRows; ++by) {
        for (int bx = 0; bx < kBlockColumns; ++bx) {
            if (symbols.head.IsSkipped(kBlockColumns * by + bx)) continue;
            FillGroup(luma, 40 + 2 * bx, 2 * by, 2, steps[kStepCoarse], coarse);
            FillGroup(luma, 80 + 4 * bx, 4 * by, 4, steps[kStepFine], fine);
            FillGroup(luma, 2 * bx, 30 + 2 * by, 2, steps[kStepCoarse], coarse);
            FillGroup(luma, 4 * bx, 60 + 4 * by, 4, steps[kStepFine], fine);
            FillGroup(luma, 40 + 2 * bx, 30 + 2 * by, 2, steps[kStepCoarseDiagonal], coarse);
        }
    }
}

void ReferenceInverseDwt(ReferencePlanes& planes, int last_region) {
    for (size_t p = 0; p < 3; ++p) {
        float* plane = planes.planes[p].data();
        for (int region = p == 0 ? 2 : 3; region >= last_region; --region) {
            const int width = kPictureWidth >> region;
            const int height = kPictureHeight >> region;
            for (int x = 0; x < width; ++x) SynthLine(plane + x, height, kStride);
            for (int y = 0; y < height; ++y) SynthLine(plane + y * kStride, width, 1);
        }
    }
}

void ReferenceToBgr(const ReferencePlanes& planes, uint8_t* picture) {
    for (size_t i = 0; i < planes.planes[0].size(); ++i, picture += 3) {
        const int y = Low16(static_cast<int>(planes.planes[0][i]));
        const int u = Low16(static_cast<int>(planes.planes[1][i]));
        const int v = Low16(static_cast<int>(planes.planes[2][i]));
        picture[0] = Clamp((128 * y + 260 * u) >> 7);
        picture[1] = Clamp((128 * y - 51 * u - 74 * v) >> 7);
        picture[2] = Clamp((128 * y + 146 * v) >> 7);
    }
}
