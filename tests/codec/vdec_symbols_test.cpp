#include <gtest/gtest.h>

#include <algorithm>
#include <memory>

#include "tests/codec/vdec_payload.h"

namespace {

class Symbols : public testing::Test {
protected:
    // Stale values in every place show what is not written.
    void Read(const std::vector<uint8_t>& payload) {
        m_symbols->values.fill(-7);
        vdec_read_symbols(SharedCodes(), payload.data(), payload.size(), *m_symbols);
    }
    int At(size_t index) const { return m_symbols->values[index]; }
    bool AllZero(size_t from, size_t to) const {
        const auto begin = m_symbols->values.begin();
        return std::all_of(begin + static_cast<std::ptrdiff_t>(from), begin + static_cast<std::ptrdiff_t>(to),
                           [](int16_t value) { return value == 0; });
    }

    PayloadWriter m_writer{SharedCodes()};
    std::unique_ptr<VdecSymbols> m_symbols = std::make_unique<VdecSymbols>();
};

TEST_F(Symbols, EndsOfEachAlphabetStandForTheirValues) {
    struct {
        VdecGroup group;
        int most, least;
        size_t count;
    } const cases[] = {{kYApprox, 300, -299, 1200},
                       {kUApprox, 150, -149, 300},
                       {kVApprox, 160, -164, 300},
                       {kCoarseDetail, 80, -79, 12},
                       {kFineDetail, 30, -29, 32}};
    m_writer.Start(12, 32);
    for (const auto& c : cases) {
        m_writer.Put(c.group, c.most);
        m_writer.Put(c.group, c.least);
        m_writer.Put(c.group, -1);
        m_writer.PutRepeated(c.group, 0, c.count - 3);
    }
    Read(m_writer.Bytes());
    for (const auto& c : cases) {
        const size_t first = vdec_groups[c.group].first_value;
        EXPECT_EQ(At(first), c.most);
        EXPECT_EQ(At(first + 1), c.least);
        EXPECT_EQ(At(first + 2), -1);
        EXPECT_TRUE(AllZero(first + 3, first + vdec_groups[c.group].value_count));
    }
}

// More values than there is room for: nothing is written outside the group, and the next group starts behind
// the surplus.
TEST_F(Symbols, SurplusIsReadAndDropped) {
    m_writer.Start(3600 + 777, 9600 + 5000);
    m_writer.PutRepeated(kYApprox, 1, 1200);
    m_writer.PutRepeated(kUApprox, 2, 300);
    m_writer.PutRepeated(kVApprox, 3, 300);
    m_writer.PutRepeated(kCoarseDetail, 4, 3600);
    m_writer.PutRepeated(kCoarseDetail, 5, 777);
    m_writer.PutRepeated(kFineDetail, 6, 9600);
    m_writer.PutRepeated(kFineDetail, 7, 5000);
    Read(m_writer.Bytes());
    for (size_t i = 0; i < kValueCount; ++i) {
        const int expected = i < 1200 ? 1 : i < 1500 ? 2 : i < 1800 ? 3 : i < 5400 ? 4 : 6;
        ASSERT_EQ(At(i), expected) << "value " << i;
    }
    EXPECT_EQ(m_symbols->head.coarse_count, 4377);
    EXPECT_EQ(m_symbols->head.fine_count, 14600);
}

// Cut at every byte: values whose codes are whole are there, all others are 0, whatever bits are left.
TEST_F(Symbols, ShortPayloadIsCompletedWithZeroValues) {
    m_writer.Start(24, 64);
    m_writer.ClearSkip(0);
    m_writer.ClearSkip(299);
    std::vector<size_t> code_ends;  // bit position behind the code of value i, in stream order
    std::vector<size_t> places;
    const auto put = [&](VdecGroup group, size_t count) {
        for (size_t i = 0; i < count; ++i) {
            m_writer.Put(group, -5);
            code_ends.push_back(m_writer.BitCount());
            places.push_back(vdec_groups[group].first_value + i);
        }
    };
    put(kYApprox, 1200);
    put(kUApprox, 300);
    put(kVApprox, 300);
    put(kCoarseDetail, 24);
    put(kFineDetail, 64);
    const std::vector<uint8_t> whole = m_writer.Bytes();
    for (size_t length = 0; length <= whole.size(); ++length) {
        Read(std::vector<uint8_t>(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length)));
        for (size_t i = 0; i < places.size(); ++i) {
            ASSERT_EQ(At(places[i]), code_ends[i] <= 8 * length ? -5 : 0)
                << "value " << i << ", length " << length;
        }
        ASSERT_TRUE(AllZero(kCoarseStart + 24, kFineStart));
        ASSERT_TRUE(AllZero(kFineStart + 64, kValueCount));
        ASSERT_EQ(m_symbols->head.IsSkipped(0), length < 5) << "length " << length;
        ASSERT_EQ(m_symbols->head.IsSkipped(299), length < 42) << "length " << length;
    }
}

}  // namespace
