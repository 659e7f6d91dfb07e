#include "tools/dump/payload_facts.h"

#include <algorithm>
#include <new>

namespace tools {
namespace {

constexpr unsigned kCoarseCountBits = 15;

}  // namespace

PayloadInspector::PayloadInspector() {
    for (std::size_t i = 0; i < kGroupCount; ++i) {
        if (!huff_build(vdec_groups[i].alphabet_size, vdec_groups[i].counts, trees_[i]))
            throw std::bad_alloc();
    }
}

PayloadFacts PayloadInspector::Inspect(std::span<const uint8_t> payload) const {
    // What is missing of the head counts as zero bits, as it does in the decoder.
    std::array<uint8_t, kPayloadHeadBytes> head = {};
    std::copy_n(payload.begin(), std::min(payload.size(), head.size()), head.begin());

    PayloadFacts facts;
    facts.bytes = payload.size();
    uint32_t word = 0;
    for (std::size_t i = 0; i < 4; ++i) word |= static_cast<uint32_t>(head[i]) << (8 * i);
    facts.coarse_count = word & ((1U << kCoarseCountBits) - 1);
    facts.fine_count = word >> kCoarseCountBits;
    for (std::size_t block = 0; block < kBlockCount; ++block) {
        if ((head[4 + block / 8] >> (block % 8) & 1) == 0) ++facts.coded_blocks;
    }

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
