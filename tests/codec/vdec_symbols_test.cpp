// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <random>

#include "tests/codec/vdec_payload.h"

namespace {

// The values that one bit a step gives: 0 from the first code on that the payload does not hold whole; those
// beyond a group's room are read and dropped.
std::vector<int16_t> ReadBitByBit(const std::vector<uint8_t>& payload, size_t coarse, size_t fine) {
    std::vector<int16_t> values(kValueCount, 0);
    const size_t counts[kGroupCount] = {1200, 300, 300, coarse, fine};
    size_t position = 8 * std::min(payload.size(), kPayloadHeadBytes);
    for (size_t group = 0; group < kGroupCount; ++group) {
        const VdecGroupInfo& info = vdec_groups[group];
        for (size_t i = 0; i < counts[group]; ++i) {
            const int32_t symbol =
                huff_decode_symbol(SharedCodes().trees[group], payload.data(), payload.size(), position);
            if (symbol == kHuffEndOfPayload) break;
            if (i >= info.value_count) continue;
            values[info.first_value + i] = static_cast<int16_t>(vdec_symbol_value(symbol, info.sign_point));
        }
    }
    return values;
}

// Payloads of any length: cut ones, with counts beyond the room, or without a whole head.
TEST(Symbols, AreWhatOneBitAStepReads) {
    std::mt19937 random(1);
    const auto symbols = std::make_unique<VdecSymbols>();
    for (size_t round = 0; round < 2000; ++round) {
        std::vector<uint8_t> payload(round < 50 ? round : random() % (round % 3 == 0 ? 12000 : 3000));
        // Long codes are rare in even bits: more zeros or ones lead down the deep branches. Ones alone are
        // the shortest codes of the detail groups, so that look-ups give all the values that they can.
        for (uint8_t& byte : payload) {
            byte = static_cast<uint8_t>(random());
            if (round % 4 == 1) byte = static_cast<uint8_t>(byte & random());
            if (round % 4 == 2) byte = static_cast<uint8_t>(byte | random());
            if (round % 4 == 3) byte = 0xFF;
        }
        uint32_t word = 0;
        if (payload.size() >= 4) {
            word = static_cast<uint32_t>(random() % 5000 | random() % 13000 << 15);
            for (size_t i = 0; i < 4; ++i) payload[i] = static_cast<uint8_t>(word >> (8 * i));
        }
        // Stale values in every place show what is not written.
        symbols->values.fill(-7);
        vdec_read_symbols(SharedCodes(), payload.data(), payload.size(), *symbols);
        ASSERT_EQ(static_cast<uint32_t>(symbols->head.coarse_count), word & 0x7FFF);
        ASSERT_EQ(static_cast<uint32_t>(symbols->head.fine_count), word >> 15);
        for (int block = 0; block < kBlockCount; ++block) {
            const size_t at = 4 + static_cast<size_t>(block) / 8;
            const bool is_skipped = at >= payload.size() || (payload[at] >> block % 8 & 1) != 0;
            ASSERT_EQ(symbols->head.IsSkipped(block), is_skipped) << round << ", block " << block;
        }
        const std::vector<int16_t> expected = ReadBitByBit(payload, word & 0x7FFF, word >> 15);
        ASSERT_TRUE(std::equal(expected.begin(), expected.end(), symbols->values.begin())) << round;
    }
}

}  // namespace
