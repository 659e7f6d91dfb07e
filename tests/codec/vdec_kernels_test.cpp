// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <random>

#include "tests/codec/vdec_payload.h"
#include "tests/codec/vdec_reference.h"

namespace {

struct Path {
    VdecIsa isa;
    const char* name;
};

class Kernels : public testing::TestWithParam<Path> {
protected:
    void SetUp() override {
        m_kernels = vdec_kernels_for(GetParam().isa);
        if (m_kernels == nullptr) GTEST_SKIP() << "this machine has no " << GetParam().name;
    }
    double Unit() { return std::uniform_real_distribution<double>(-1, 1)(m_random); }

    // Fills a subband, and its place in the plane of the reference implementation, with values of wildly
    // mixed magnitudes: there a sum formed in another order comes out as another float.
    template <size_t N>
    void FillMixed(std::array<double, N>& subband, int level, int left, int top, std::vector<float>& plane) {
        for (size_t i = 0; i < N; ++i) {
            const auto value = static_cast<float>(std::ldexp(Unit(), static_cast<int>(m_random() % 60) - 10));
            subband[i] = double{value};
            const int x = left + static_cast<int>(i) % LevelWidth(level);
            const int y = top + static_cast<int>(i) / LevelWidth(level);
            plane[static_cast<size_t>(y * kPictureWidth + x)] = value;
        }
    }
    void ExpectHalfPlanes(const VdecHalfPlanes& halves, const ReferencePlanes& planes, int round) {
        const VdecHalfPlanes::Plane* half_planes[] = {&halves.y, &halves.u, &halves.v};
        for (size_t p = 0; p < 3; ++p) {
            for (int i = 0; i < VdecHalfPlanes::kWidth * VdecHalfPlanes::kHeight; ++i) {
                const int x = i % VdecHalfPlanes::kWidth;
                const int y = i / VdecHalfPlanes::kWidth;
                ASSERT_EQ(half_planes[p]->Row(y)[x],
                          planes.planes[p][static_cast<size_t>(y * kPictureWidth + x)])
                    << "plane " << p << ", round " << round;
            }
        }
    }

    const VdecKernels* m_kernels = nullptr;
    std::mt19937 m_random{17};
    std::unique_ptr<VdecCoefficients> m_coefficients = std::make_unique<VdecCoefficients>();
    std::unique_ptr<VdecHalfPlanes> m_halves = std::make_unique<VdecHalfPlanes>();
};

TEST_P(Kernels, FormSumsInTheOrderOfTheFormat) {
    VdecCoefficients& c = *m_coefficients;
    for (int round = 0; round < 8; ++round) {
        ReferencePlanes planes;
        auto& [y, u, v] = planes.planes;
        FillMixed(c.y_ll3, 3, 0, 0, y);
        FillMixed(c.y_hl3, 3, LevelWidth(3), 0, y);
        FillMixed(c.y_lh3, 3, 0, LevelHeight(3), y);
        FillMixed(c.y_hh3, 3, LevelWidth(3), LevelHeight(3), y);
        FillMixed(c.y_hl2, 2, LevelWidth(2), 0, y);
        FillMixed(c.y_lh2, 2, 0, LevelHeight(2), y);
        FillMixed(c.u_ll4, 4, 0, 0, u);
        FillMixed(c.v_ll4, 4, 0, 0, v);
        vdec_inverse_dwt(*m_kernels, c, *m_halves);
        ReferenceInverseDwt(planes, 1);
        ExpectHalfPlanes(*m_halves, planes, round);
    }
}

// Next to a step of the truncation, at every magnitude: rows that are flat but for a few units in the last
// place, and random ones. One value at a time is the measure.
TEST_P(Kernels, TruncateWhatDoublePrecisionGives) {
    constexpr int kHalf = VdecHalfPlanes::kWidth, kMargin = VdecHalfPlanes::kMargin;
    alignas(64) float values[kLowTaps][VdecHalfPlanes::kStride] = {};
    const float* const rows[] = {values[0] + kMargin, values[1] + kMargin, values[2] + kMargin,
                                 values[3] + kMargin};
    int16_t samples[2][2][kPictureWidth];
    for (int round = 0; round < 6000; ++round) {
        const double size = std::ldexp(1, static_cast<int>(m_random() % 20));
        const double step =
            (round % 7 == 0 ? 0 : std::round(size * Unit())) * (round % 3 == 1 ? 2 : 2.0000002);
        float peak = 0;
        for (auto& row : values) {
            for (int x = -1; x < kHalf + 2; ++x) {
                const double value = round % 3 == 0 ? size * Unit() : step + std::ldexp(size * Unit(), -22);
                row[kMargin + x] = static_cast<float>(value);
                peak = std::max(peak, std::abs(row[kMargin + x]));
            }
        }
        m_kernels->synth_samples(rows, peak, samples[0][0], samples[0][1]);
        vdec_kernels_for(VdecIsa::Scalar)->synth_samples(rows, peak, samples[1][0], samples[1][1]);
        for (int i = 0; i < 2 * kPictureWidth; ++i) {
            ASSERT_EQ(samples[0][i / kPictureWidth][i % kPictureWidth],
                      samples[1][i / kPictureWidth][i % kPictureWidth])
                << round << " " << step;
        }
    }
}

TEST_P(Kernels, ConvertColours) {
    const struct {
        int16_t y, u, v;
        std::array<uint8_t, 3> bgr;
    } cases[] = {
        {255, 0, 0, {255, 255, 255}},  {300, 0, 0, {255, 255, 255}},      {-5, 0, 0, {0, 0, 0}},
        {100, 50, 0, {201, 80, 100}},  {10, -20, 0, {0, 17, 10}},         {25536, 0, 0, {255, 255, 255}},
        {4464, 0, 0, {255, 255, 255}}, {255, 127, -128, {255, 255, 109}}, {0, -128, 127, {0, 0, 144}}};
    for (const auto& c : cases) {
        const std::vector<int16_t> y(kPictureWidth, c.y), u(kPictureWidth, c.u), v(kPictureWidth, c.v);
        std::vector<uint8_t> bgr(3 * y.size());
        m_kernels->bgr_row(y.data(), u.data(), v.data(), kPictureWidth, bgr.data());
        for (size_t i = 0; i < bgr.size(); ++i) ASSERT_EQ(bgr[i], c.bgr[i % 3]) << c.y << " " << c.u;
    }
}

// The whole transform, at half size where it is stored and as pictures.
TEST_P(Kernels, RebuildThePicturesOfTheReferenceImplementation) {
    const auto symbols = std::make_unique<VdecSymbols>();
    ReferencePlanes planes;
    std::vector<uint8_t> picture(kPictureBytes), expected(kPictureBytes);
    for (int round = 0; round < 24; ++round) {
        symbols->values.fill(0);
        if (round % 3 == 2) {
            // Anything that 16 bits can hold.
            for (int16_t& value : symbols->values) value = static_cast<int16_t>(m_random());
            for (uint8_t& flags : symbols->head.skip_flags) flags = static_cast<uint8_t>(m_random());
        } else {
            const std::vector<uint8_t> payload =
                RandomPayload(static_cast<uint32_t>(round), 100 * (round % 4), round % 3 == 0 ? 0.3 : 2.0);
            vdec_read_symbols(SharedCodes(), payload.data(), payload.size(), *symbols);
        }
        const int quality = round % kQualityLevels;
        vdec_reconstruct(*symbols, quality, *m_coefficients);
        vdec_inverse_dwt(*m_kernels, *m_coefficients, *m_halves);
        vdec_to_bgr(*m_kernels, *m_halves, picture.data());

        ReferenceReconstruct(*symbols, quality, planes);
        ReferenceInverseDwt(planes, 1);
        ExpectHalfPlanes(*m_halves, planes, round);
        ReferenceReconstruct(*symbols, quality, planes);
        ReferenceInverseDwt(planes);
        ReferenceToBgr(planes, expected.data());
        ASSERT_EQ(picture, expected) << "round " << round;
    }
}

constexpr Path kPaths[] = {
    {VdecIsa::Scalar, "scalar"},
#ifdef __x86_64__
    {VdecIsa::Sse2, "SSE2"},
    {VdecIsa::Avx2, "AVX2"},
    {VdecIsa::Avx512, "AVX512"},
#elif defined(__aarch64__)
    {VdecIsa::Neon, "NEON"},
#endif
};
INSTANTIATE_TEST_SUITE_P(All, Kernels, testing::ValuesIn(kPaths),
                         [](const auto& test) { return test.param.name; });

}  // namespace
