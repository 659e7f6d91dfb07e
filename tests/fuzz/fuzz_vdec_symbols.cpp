// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cstdlib>
#include <memory>
#include <vector>

#include "codec/vdec_stages.h"

// Any bytes as a payload, symbols only: the look-up tables against one bit a step.

namespace {

void Require(bool holds) {
    if (!holds) std::abort();
}

void CheckGroup(const VdecCodes& codes, size_t group, const std::vector<uint8_t>& payload, size_t count,
                size_t& bit_position, const VdecSymbols& symbols) {
    const VdecGroupInfo& info = vdec_groups[group];
    for (size_t i = 0; i < std::max(count, info.value_count); ++i) {
        int32_t value = 0;
        if (i < count) {
            const int32_t symbol =
                huff_decode_symbol(codes.trees[group], payload.data(), payload.size(), bit_position);
            if (symbol != kHuffEndOfPayload) {
                value = vdec_symbol_value(symbol, info.sign_point);
            } else if (i >= info.value_count) {
                return;
            }
        }
        if (i < info.value_count) Require(symbols.values[info.first_value + i] == value);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const std::unique_ptr<VdecCodes> codes = [] {
        auto fresh = std::make_unique<VdecCodes>();
        Require(vdec_build_codes(*fresh));
        return fresh;
    }();
    static const auto symbols = std::make_unique<VdecSymbols>();
    const std::vector<uint8_t> payload(data, data + size);
    symbols->values.fill(-7);
    vdec_read_symbols(*codes, payload.data(), payload.size(), *symbols);

    size_t bit_position = std::min(8 * payload.size(), 8 * kPayloadHeadBytes);
    CheckGroup(*codes, kYApprox, payload, vdec_groups[kYApprox].value_count, bit_position, *symbols);
    CheckGroup(*codes, kUApprox, payload, vdec_groups[kUApprox].value_count, bit_position, *symbols);
    CheckGroup(*codes, kVApprox, payload, vdec_groups[kVApprox].value_count, bit_position, *symbols);
    CheckGroup(*codes, kCoarseDetail, payload, static_cast<size_t>(symbols->head.coarse_count), bit_position,
               *symbols);
    CheckGroup(*codes, kFineDetail, payload, static_cast<size_t>(symbols->head.fine_count), bit_position,
               *symbols);
    return 0;
}
