#include <gtest/gtest.h>

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
            for (size_t i = 0; i < half_planes[p]->size(); ++i) {
                const size_t at = i / VdecHalfPlanes::kWidth * kPictureWidth + i % VdecHalfPlanes::kWidth;
                ASSERT_EQ((*half_planes[p])[i], double{planes.planes[p][at]})
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

TEST_P(Kernels, WrapToSamples) {
    // Far outside 16 bits: -40000.0 is 25536, 70000.0 is 4464.
    for (int round = 0; round < 100; ++round) {
        double low[28], results[48];
        int16_t samples[48];
        for (double& value : low) value = double{static_cast<float>(std::ldexp(Unit(), round % 24))};
        m_kernels->synth_rows(low + 2, nullptr, 24, results);
        m_kernels->synth_samples(low + 2, 24, samples);
        for (size_t i = 0; i < 48; ++i)
            ASSERT_EQ(samples[i], static_cast<int16_t>(static_cast<int32_t>(results[i]))) << results[i];
    }
}

TEST_P(Kernels, ConvertColours) {
    struct {
        int16_t y, u, v;
        uint8_t b, g, r;
    } const known[] = {
        {255, 0, 0, 255, 255, 255},  {300, 0, 0, 255, 255, 255},      {-5, 0, 0, 0, 0, 0},
        {100, 50, 0, 201, 80, 100},  {10, -20, 0, 0, 17, 10},         {25536, 0, 0, 255, 255, 255},
        {4464, 0, 0, 255, 255, 255}, {255, 127, -128, 255, 255, 109}, {0, -128, 127, 0, 0, 144}};
    // Small values, full-range ones, and the ends of the range and of what is clamped.
    const int16_t ends[] = {-32768, -256, -128, -1, 0, 127, 255, 32767};
    std::array<std::vector<int16_t>, 3> samples;
    ReferencePlanes planes;
    for (size_t i = 0; i < planes.planes[0].size(); ++i) {
        for (size_t p = 0; p < 3; ++p) {
            auto value = static_cast<int16_t>(static_cast<int16_t>(m_random()) >> 4 * (m_random() % 3));
            if (i % 4 == 0) value = ends[m_random() % std::size(ends)];
            if (i < std::size(known)) value = p == 0 ? known[i].y : p == 1 ? known[i].u : known[i].v;
            samples[p].push_back(value);
            planes.planes[p][i] = value;
        }
    }
    std::vector<uint8_t> bgr(kPictureBytes), expected(kPictureBytes);
    m_kernels->bgr_row(samples[0].data(), samples[1].data(), samples[2].data(),
                       static_cast<int>(samples[0].size()), bgr.data());
    for (size_t i = 0; i < std::size(known); ++i) {
        const std::array found{bgr[3 * i], bgr[3 * i + 1], bgr[3 * i + 2]};
        EXPECT_EQ(found, (std::array{known[i].b, known[i].g, known[i].r})) << "case " << i;
    }
    ReferenceToBgr(planes, expected.data());
    EXPECT_EQ(bgr, expected);
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
            const std::vector<uint8_t> payload = RandomPayload(SharedCodes(), static_cast<uint32_t>(round),
                                                               100 * (round % 4), round % 3 == 0 ? 0.3 : 2.0);
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

INSTANTIATE_TEST_SUITE_P(All, Kernels,
                         testing::Values(Path{VdecIsa::Scalar, "scalar"}, Path{VdecIsa::Sse2, "SSE2"},
                                         Path{VdecIsa::Avx2, "AVX2"}),
                         [](const auto& test) { return test.param.name; });

}  // namespace
