// SPDX-License-Identifier: MIT
#include "tests/codec/vdec_payload.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <random>

#include "tools/encode/code_table.h"

namespace {

const std::vector<tools::CodeTable>& Tables() {
    static const std::vector<tools::CodeTable> tables(std::begin(vdec_groups), std::end(vdec_groups));
    return tables;
}

}  // namespace

std::vector<uint8_t> MakePayload(const std::set<int>& coded,
                                 const std::function<int(VdecGroup group)>& next_value) {
    const size_t coarse = coded.size() * kCoarsePerBlock;
    const size_t fine = coded.size() * kFinePerBlock;
    const size_t counts[kGroupCount] = {1200, 300, 300, coarse, fine};
    std::vector<uint8_t> payload(size_t{1} << 16);
    tools::BitWriter bits(payload);
    bits.Write(static_cast<uint32_t>(coarse), 15);
    bits.Write(static_cast<uint32_t>(fine), 17);
    for (int flag = 0; flag < static_cast<int>(8 * kSkipFlagBytes); ++flag)
        bits.Write(coded.contains(flag) ? 0 : 1, 1);
    for (size_t group = 0; group < kGroupCount; ++group) {
        for (size_t i = 0; i < counts[group]; ++i)
            Tables()[group].Write(next_value(static_cast<VdecGroup>(group)), bits);
    }
    bits.Finish();
    payload.resize(bits.size_in_bytes());
    return payload;
}

std::vector<uint8_t> RandomPayload(uint32_t seed, int coded, double spread) {
    std::mt19937 random(seed);
    std::set<int> blocks;
    for (int block = 0; block < kBlockCount; ++block) {
        if (std::uniform_int_distribution<int>(0, kBlockCount - 1)(random) < coded) blocks.insert(block);
    }
    std::vector<std::normal_distribution<double>> normals;
    for (const int deviation : {20, 3, 3, 3, 1}) normals.emplace_back(0, deviation * spread);
    return MakePayload(blocks, [&](VdecGroup group) {
        const auto value = static_cast<int>(std::lround(normals[group](random)));
        return std::clamp(value, Tables()[group].lowest(), Tables()[group].highest());
    });
}

const VdecCodes& SharedCodes() {
    static const std::unique_ptr<VdecCodes> codes = [] {
        auto fresh = std::make_unique<VdecCodes>();
        if (!vdec_build_codes(*fresh)) fresh.reset();
        return fresh;
    }();
    return *codes;
}
