// SPDX-License-Identifier: MIT
#include "tools/dump/payload_facts.h"

#include <new>

#include "codec/vdec_stages.h"

namespace tools {
PayloadInspector::PayloadInspector() {
    for (std::size_t i = 0; i < kGroupCount; ++i) {
        if (!huff_build(vdec_groups[i].alphabet_size, vdec_groups[i].counts, trees_[i]))
            throw std::bad_alloc();
    }
}

PayloadFacts PayloadInspector::Inspect(std::span<const uint8_t> payload) const {
    const VdecHead head = vdec_read_head(payload.data(), payload.size());
    PayloadFacts facts;
    facts.bytes = payload.size();
    facts.coarse_count = static_cast<uint32_t>(head.coarse_count);
    facts.fine_count = static_cast<uint32_t>(head.fine_count);
    for (int block = 0; block < kBlockCount; ++block) facts.coded_blocks += head.IsSkipped(block) ? 0 : 1;

    const auto coded = static_cast<uint32_t>(facts.coded_blocks);
    facts.counts_out_of_range = facts.coarse_count > vdec_groups[kCoarseDetail].value_count ||
                                facts.fine_count > vdec_groups[kFineDetail].value_count;
    facts.counts_disagree =
        facts.coarse_count != coded * kCoarsePerBlock || facts.fine_count != coded * kFinePerBlock;
    facts.runs_short = RunsShort(payload, facts);
    return facts;
}

bool PayloadInspector::RunsShort(std::span<const uint8_t> payload, const PayloadFacts& facts) const {
    if (payload.size() < kPayloadHeadBytes) return true;
    const std::array<std::size_t, kGroupCount> symbols = {
        vdec_groups[kYApprox].value_count, vdec_groups[kUApprox].value_count,
        vdec_groups[kVApprox].value_count, facts.coarse_count, facts.fine_count};
    std::size_t position = kPayloadHeadBytes * 8;
    for (std::size_t group = 0; group < kGroupCount; ++group) {
        for (std::size_t i = 0; i < symbols[group]; ++i) {
            if (huff_decode_symbol(trees_[group], payload.data(), payload.size(), position) ==
                kHuffEndOfPayload) {
                return true;
            }
        }
    }
    return false;
}

}  // namespace tools
