#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <memory>
#include <random>

#include "tests/codec/vdec_payload.h"
#include "tests/codec/vdec_reference.h"
#include "tests/codec/vdec_unrounded.h"

namespace {

// Kernels of one instruction set: as the decoder has them, and with their double results kept.
struct Path {
    VdecIsa isa;
    const char* name;
    const VdecKernels* unrounded;
};

class Kernels : public testing::TestWithParam<Path> {
protected:
    void SetUp() override {
        m_kernels = vdec_kernels_for(GetParam().isa);
        if (m_kernels == nullptr) GTEST_SKIP() << "this machine has no " << GetParam().name;
    }
    const VdecKernels* m_kernels = nullptr;
    std::mt19937 m_random{17};

    // Ordinary, full-range and wildly mixed magnitudes: in the last, a sum in another order changes even the
    // float.
    float RandomValue(int kind) {
        const float unit = std::uniform_real_distribution<float>(-1, 1)(m_random);
        if (kind == 0) return unit * 1000;
        if (kind == 1) return (m_random() & 1) != 0 ? 32767.0F : -32768.0F;
        return std::ldexp(unit, static_cast<int>(m_random() % 60) - 10);
    }
    std::vector<float> RandomLine(int length, int kind, bool has_high) {
        std::vector<float> line(static_cast<size_t>(length));
        for (int i = 0; i < length; ++i) {
            if (i < length / 2 || has_high) line[static_cast<size_t>(i)] = RandomValue(kind);
        }
        return line;
    }
};

// Mirrored neighbours of a half-line, by the interleaved line's rule: z[-i] = z[i], z[L - 1 + i] = z[L - 1 -
// i].
double At(const std::vector<float>& line, int z) {
    const int length = static_cast<int>(line.size());
    if (z < 0) z = -z;
    if (z >= length) z = 2 * (length - 1) - z;
    return double{line[static_cast<size_t>(z % 2 == 0 ? z / 2 : length / 2 + z / 2)]};
}

std::vector<double> RowsOf(const VdecKernels& kernels, const std::vector<float>& line, bool has_high) {
    const int half = static_cast<int>(line.size()) / 2;
    std::vector<double> low, high;
    for (int k = -2; k < half + 2; ++k) {
        low.push_back(k < -1 ? 1e300 : At(line, 2 * k));  // low[-2] is not needed
        high.push_back(At(line, 2 * k + 1));
    }
    std::vector<double> results(line.size());
    kernels.synth_rows(low.data() + 2, has_high ? high.data() + 2 : nullptr, half, results.data());
    return results;
}

// The columns of a region, all from one line but scaled by a power of two of their own, which is exact.
std::vector<double> ColumnOf(const VdecKernels& kernels, const std::vector<float>& line, bool has_high,
                             int width, int column) {
    const int half = static_cast<int>(line.size()) / 2;
    std::vector<double> results;
    for (int k = 0; k < half; ++k) {
        std::vector<std::vector<double>> rows;
        const double* pointers[kLowTaps + kHighTaps];
        const auto add = [&](int z) {
            std::vector<double> row;
            for (int x = 0; x < width; ++x) row.push_back(std::ldexp(At(line, z), x - column));
            rows.push_back(std::move(row));
        };
        for (int i = 0; i < kLowTaps; ++i) add(2 * (k - 1 + i));
        for (int i = 0; i < kHighTaps; ++i) add(2 * (k - 2 + i) + 1);
        for (size_t i = 0; i < rows.size(); ++i) pointers[i] = rows[i].data();
        std::vector<double> even(static_cast<size_t>(width)), odd(even);
        kernels.synth_columns(pointers, has_high ? pointers + kLowTaps : nullptr, width, even.data(),
                              odd.data());
        results.push_back(even[static_cast<size_t>(column)]);
        results.push_back(odd[static_cast<size_t>(column)]);
    }
    return results;
}

void ExpectSame(const std::vector<double>& results, const std::vector<double>& expected, const char* what) {
    for (size_t i = 0; i < expected.size(); ++i)
        ASSERT_EQ(results[i], expected[i]) << what << ", result " << i;
}

TEST_P(Kernels, FormTheSameDoublesAndRoundThemToFloat) {
    for (int round = 0; round < 600; ++round) {
        const bool has_high = round % 2 == 0;
        const std::vector<float> line = RandomLine(40 << (round % 4), round % 3, has_high);
        std::vector<double> expected = ReferenceSynthLine(line);
        for (const VdecKernels* kernels : {GetParam().unrounded, m_kernels}) {
            SCOPED_TRACE(kernels == m_kernels ? "rounded" : "unrounded");
            ExpectSame(RowsOf(*kernels, line, has_high), expected, "row");
            if (round % 10 < 2)
                ExpectSame(ColumnOf(*kernels, line, has_high, 20, round % 20), expected, "column");
            for (double& value : expected) value = double{static_cast<float>(value)};
        }
    }
}

TEST_P(Kernels, WrapToSamples) {
    // Far outside 16 bits: -40000.0 is 25536, 70000.0 is 4464.
    for (int round = 0; round < 100; ++round) {
        const double scale = std::ldexp(1.0, round % 24);
        std::vector<double> low;
        for (int i = 0; i < 28; ++i) low.push_back(double{RandomValue(0)} / 1000 * scale);
        std::vector<double> results(48);
        m_kernels->synth_rows(low.data() + 2, nullptr, 24, results.data());
        std::vector<int16_t> samples(48);
        m_kernels->synth_samples(low.data() + 2, 24, samples.data());
        for (size_t i = 0; i < 48; ++i) {
            ASSERT_EQ(samples[i], static_cast<int16_t>(static_cast<int32_t>(results[i]))) << results[i];
        }
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
    std::vector<int16_t> y, u, v;
    for (const auto& k : known) {
        y.push_back(k.y);
        u.push_back(k.u);
        v.push_back(k.v);
    }
    const int16_t extremes[] = {-32768, -32767, -16384, -256, -129, -128,  -1,
                                0,      1,      127,    128,  255,  16384, 32767};
    for (const int16_t a : extremes) {
        for (const int16_t b : extremes) {
            for (const int16_t c : extremes) {
                y.push_back(a);
                u.push_back(b);
                v.push_back(c);
            }
        }
    }
    while (y.size() < 160000) {
        const int bits = static_cast<int>(m_random() % 3) * 4;
        y.push_back(static_cast<int16_t>(static_cast<int16_t>(m_random()) >> bits));
        u.push_back(static_cast<int16_t>(static_cast<int16_t>(m_random()) >> bits));
        v.push_back(static_cast<int16_t>(static_cast<int16_t>(m_random()) >> bits));
    }
    std::vector<uint8_t> bgr(3 * y.size());
    m_kernels->bgr_row(y.data(), u.data(), v.data(), static_cast<int>(y.size()), bgr.data());
    for (size_t i = 0; i < std::size(known); ++i) {
        EXPECT_EQ(bgr[3 * i], known[i].b) << "case " << i;
        EXPECT_EQ(bgr[3 * i + 1], known[i].g) << "case " << i;
        EXPECT_EQ(bgr[3 * i + 2], known[i].r) << "case " << i;
    }
    const auto clamp = [](int value) {
        const auto low = static_cast<int16_t>(value);
        return low < 0 ? 0 : low > 255 ? 255 : low;
    };
    for (size_t i = 0; i < y.size(); ++i) {
        ASSERT_EQ(bgr[3 * i], clamp((128 * y[i] + 260 * u[i]) >> 7)) << y[i] << ' ' << u[i] << ' ' << v[i];
        ASSERT_EQ(bgr[3 * i + 1], clamp((128 * y[i] - 51 * u[i] - 74 * v[i]) >> 7)) << y[i] << ' ' << u[i];
        ASSERT_EQ(bgr[3 * i + 2], clamp((128 * y[i] + 146 * v[i]) >> 7))
            << y[i] << ' ' << u[i] << ' ' << v[i];
    }
}

// The whole transform, at half size where it is stored and as pictures.
TEST_P(Kernels, RebuildThePicturesOfTheStraightforwardForm) {
    const auto symbols = std::make_unique<VdecSymbols>();
    const auto coefficients = std::make_unique<VdecCoefficients>();
    const auto halves = std::make_unique<VdecHalfPlanes>();
    ReferencePlanes planes;
    std::vector<uint8_t> picture(size_t{3} * kPlaneWidth * kPlaneHeight), expected(picture);
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
        vdec_reconstruct(*symbols, quality, *coefficients);
        vdec_inverse_dwt(*m_kernels, *coefficients, *halves);
        vdec_to_bgr(*m_kernels, *halves, picture.data());

        ReferenceReconstruct(*symbols, quality, planes);
        ReferenceInverseDwt(planes, 1);
        const VdecHalfPlanes::Plane* half_planes[] = {&halves->y, &halves->u, &halves->v};
        for (size_t p = 0; p < 3; ++p) {
            for (size_t i = 0; i < half_planes[p]->size(); ++i) {
                const size_t at = i / VdecHalfPlanes::kWidth * kPlaneWidth + i % VdecHalfPlanes::kWidth;
                ASSERT_EQ((*half_planes[p])[i], double{planes.planes[p][at]})
                    << "plane " << p << ", round " << round;
            }
        }
        ReferenceReconstruct(*symbols, quality, planes);
        ReferenceInverseDwt(planes);
        ReferenceToBgr(planes, expected.data());
        ASSERT_EQ(std::memcmp(picture.data(), expected.data(), picture.size()), 0) << "round " << round;
    }
}

INSTANTIATE_TEST_SUITE_P(All, Kernels,
                         testing::Values(Path{VdecIsa::Scalar, "scalar", &unrounded_scalar},
                                         Path{VdecIsa::Sse2, "SSE2", &unrounded_sse2},
                                         Path{VdecIsa::Avx2, "AVX2", &unrounded_avx2}),
                         [](const auto& test) { return test.param.name; });

}  // namespace
