#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <random>

#include "tests/video/vdec_reference.h"

namespace {

class Reconstruct : public testing::Test {
protected:
    Reconstruct() {
        m_symbols->values.fill(0);
        m_symbols->head.skip_flags.fill(0xFF);
    }
    void ClearSkip(int block) {
        uint8_t& flags = m_symbols->head.skip_flags[static_cast<size_t>(block) / 8];
        flags = static_cast<uint8_t>(flags & ~(1U << (block % 8)));
    }

    std::unique_ptr<VdecSymbols> m_symbols = std::make_unique<VdecSymbols>();
    std::unique_ptr<VdecCoefficients> m_bands = std::make_unique<VdecCoefficients>();
};

TEST_F(Reconstruct, ApproximationsRunOnAndWrap) {
    m_symbols->values[kYApproxStart] = 300;
    for (size_t i = 1; i < 17; ++i) m_symbols->values[i] = 300;  // runs up to 5100
    m_symbols->values[40] = -100;                                // row 1 goes on from row 0's first
    vdec_reconstruct(*m_symbols, 3, *m_bands);
    EXPECT_EQ(m_bands->y_approx[0], 2400);
    EXPECT_EQ(m_bands->y_approx[12], 31200);
    EXPECT_EQ(m_bands->y_approx[16], 40800 - 65536);
    EXPECT_EQ(m_bands->y_approx[39], 40800 - 65536);
    EXPECT_EQ(m_bands->y_approx[40], 1600);
    EXPECT_EQ(m_bands->y_approx[79], 1600);
    EXPECT_EQ(m_bands->y_approx[80], 1600);
}

// Values are taken only for coded positions, in the order coarse right, fine right, coarse below, fine below,
// coarse diagonal.
TEST_F(Reconstruct, DetailGoesToTheCodedPositions) {
    ClearSkip(21);  // column 1, row 1
    ClearSkip(299);
    for (int i = 0; i < 2 * kCoarsePerBlock; ++i) {
        m_symbols->values[kCoarseStart + static_cast<size_t>(i)] = static_cast<int16_t>(i + 1);
    }
    for (int i = 0; i < 2 * kFinePerBlock; ++i) {
        m_symbols->values[kFineStart + static_cast<size_t>(i)] = static_cast<int16_t>(-i - 1);
    }
    vdec_reconstruct(*m_symbols, 0, *m_bands);
    const auto coarse = [](int x, int y) { return static_cast<size_t>(40 * y + x); };
    const auto fine = [](int x, int y) { return static_cast<size_t>(80 * y + x); };
    EXPECT_EQ(m_bands->coarse_right[coarse(2, 2)], 1 * 48);
    EXPECT_EQ(m_bands->coarse_right[coarse(2, 3)], 3 * 48);
    EXPECT_EQ(m_bands->coarse_below[coarse(3, 2)], 6 * 48);
    EXPECT_EQ(m_bands->coarse_diagonal[coarse(3, 3)], 12 * 52);
    EXPECT_EQ(m_bands->fine_right[fine(7, 4)], -4 * 60);
    EXPECT_EQ(m_bands->fine_below[fine(4, 7)], -(16 + 13) * 60);
    EXPECT_EQ(m_bands->coarse_right[coarse(38, 28)], 13 * 48);
    EXPECT_EQ(m_bands->fine_below[fine(79, 59)], -64 * 60);
    const auto filled = [](const auto& band) {
        return std::count_if(band.begin(), band.end(), [](double value) { return value != 0; });
    };
    EXPECT_EQ(
        filled(m_bands->coarse_right) + filled(m_bands->coarse_below) + filled(m_bands->coarse_diagonal),
        2 * kCoarsePerBlock);
    EXPECT_EQ(filled(m_bands->fine_right) + filled(m_bands->fine_below), 2 * kFinePerBlock);
}

// All bands against the planes of the straightforward form, also with what an earlier picture left behind.
TEST_F(Reconstruct, FillsThePlanesOfTheStraightforwardForm) {
    std::mt19937 random(3);
    ReferencePlanes planes;
    for (int round = 0; round < 40; ++round) {
        for (int16_t& value : m_symbols->values) value = static_cast<int16_t>(random());
        for (uint8_t& flags : m_symbols->head.skip_flags) flags = static_cast<uint8_t>(random());
        vdec_reconstruct(*m_symbols, round % kQualityLevels, *m_bands);
        ReferenceReconstruct(*m_symbols, round % kQualityLevels, planes);

        struct {
            const double* band;
            size_t plane;
            int x, y, width, height;
        } const bands[] = {{m_bands->y_approx.data(), 0, 0, 0, 40, 30},
                           {m_bands->coarse_right.data(), 0, 40, 0, 40, 30},
                           {m_bands->coarse_below.data(), 0, 0, 30, 40, 30},
                           {m_bands->coarse_diagonal.data(), 0, 40, 30, 40, 30},
                           {m_bands->fine_right.data(), 0, 80, 0, 80, 60},
                           {m_bands->fine_below.data(), 0, 0, 60, 80, 60},
                           {m_bands->u_approx.data(), 1, 0, 0, 20, 15},
                           {m_bands->v_approx.data(), 2, 0, 0, 20, 15}};
        for (const auto& b : bands) {
            for (int y = 0; y < b.height; ++y) {
                for (int x = 0; x < b.width; ++x) {
                    const auto at = static_cast<size_t>((b.y + y) * kPlaneWidth + b.x + x);
                    ASSERT_EQ(b.band[y * b.width + x], double{planes.planes[b.plane][at]});
                }
            }
        }
    }
}

}  // namespace
