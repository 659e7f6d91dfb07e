#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "tests/codec/vdec_payload.h"

namespace {

// A tie broken the other way is another code, and no message could be read.
TEST(CodeTrees, FollowFromTheCounts) {
    const struct {
        VdecGroup group;
        const char *symbol_0, *symbol_1, *symbol_2, *first_negative;
        size_t longest;
        int symbols_of_longest;
    } cases[] = {{kYApprox, "100", "1101", "0100", "1010", 19, 156},
                 {kUApprox, "11", "100", "0111", "00", 17, 154},
                 {kVApprox, "10", "110", "0110", "111", 17, 192},
                 {kCoarseDetail, "1", "001", "0000", "0111", 20, 64},
                 {kFineDetail, "1", "010", "0001", "011", 20, 4}};
    for (const auto& c : cases) {
        const std::vector<std::string> codes = CodesOf(SharedCodes().trees[c.group]);
        EXPECT_EQ(codes[0], c.symbol_0) << c.group;
        EXPECT_EQ(codes[1], c.symbol_1) << c.group;
        EXPECT_EQ(codes[2], c.symbol_2) << c.group;
        EXPECT_EQ(codes[static_cast<size_t>(vdec_groups[c.group].sign_point) + 1], c.first_negative)
            << c.group;
        const auto is_longest = [&](const std::string& code) { return code.size() == c.longest; };
        EXPECT_EQ(std::count_if(codes.begin(), codes.end(), is_longest), c.symbols_of_longest) << c.group;
        EXPECT_TRUE(std::all_of(codes.begin(), codes.end(),
                                [&](const std::string& code) { return code.size() <= c.longest; }));
    }
}

// The values that one bit a step gives, 0 from the first code on that the payload does not hold whole.
std::vector<int16_t> ReadBitByBit(VdecGroup group, const std::vector<uint8_t>& payload, size_t& bit_position,
                                  size_t count) {
    std::vector<int16_t> values;
    while (values.size() < count) {
        const int32_t symbol =
            huff_decode_symbol(SharedCodes().trees[group], payload.data(), payload.size(), bit_position);
        if (symbol == kHuffEndOfPayload) break;
        values.push_back(static_cast<int16_t>(vdec_symbol_value(symbol, vdec_groups[group].sign_point)));
    }
    values.resize(count, 0);
    return values;
}

class LookUp : public testing::TestWithParam<VdecGroup> {};

// Random bits hold long codes too; every start, count and end exercises the way into and out of the fast
// path.
TEST_P(LookUp, ReadsWhatOneBitAStepReads) {
    const VdecGroup group = GetParam();
    std::mt19937 random(group);
    for (int round = 0; round < 4000; ++round) {
        std::vector<uint8_t> payload(random() % (round % 3 == 0 ? 1500 : 24));
        // Long codes are rare in even bits: more zeros or ones lead down the deep branches. Ones alone are
        // the shortest codes of the detail groups, so that look-ups give all the values that they can.
        for (uint8_t& byte : payload) {
            byte = static_cast<uint8_t>(random());
            if (round % 4 == 1) byte = static_cast<uint8_t>(byte & random());
            if (round % 4 == 2) byte = static_cast<uint8_t>(byte | random());
            if (round % 4 == 3) byte = 0xFF;
        }
        const size_t start = payload.empty() ? 0 : random() % (8 * payload.size() + 1);
        const size_t count = random() % (round % 5 == 0 ? 12 : round % 5 == 1 ? 3000 : 80);

        size_t slow_position = start;
        const std::vector<int16_t> expected = ReadBitByBit(group, payload, slow_position, count);
        size_t position = start;
        std::vector<int16_t> values(count + kHuffValueSlack + 1, 12345);
        huff_read_values(SharedCodes().trees[group], SharedCodes().lookups[group],
                         vdec_groups[group].sign_point, payload.data(), payload.size(), position, count,
                         values.data());
        ASSERT_TRUE(std::equal(expected.begin(), expected.end(), values.begin())) << "round " << round;
        ASSERT_EQ(position, slow_position) << "round " << round;
        ASSERT_EQ(values.back(), 12345) << "wrote behind the slack";
    }
}

INSTANTIATE_TEST_SUITE_P(All, LookUp,
                         testing::Values(kYApprox, kUApprox, kVApprox, kCoarseDetail, kFineDetail));

}  // namespace
