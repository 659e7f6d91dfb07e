// SPDX-License-Identifier: MIT
#include <algorithm>

#include "codec/vdec_stages.h"

namespace {

constexpr size_t kFirstCodeBit = 8 * kPayloadHeadBytes;

}  // namespace

bool vdec_build_codes(VdecCodes& codes) {
    for (size_t group = 0; group < kGroupCount; ++group) {
        const VdecGroupInfo& info = vdec_groups[group];
        if (!huff_build(info.alphabet_size, info.counts, codes.trees[group])) return false;
        huff_build_lookup(codes.trees[group], info.sign_point, codes.lookups[group]);
    }
    return true;
}

VdecHead vdec_read_head(const uint8_t* payload, size_t length) {
    VdecHead head;
    uint32_t word = 0;
    if (length >= 4) {
        word =
            payload[0] | uint32_t{payload[1]} << 8 | uint32_t{payload[2]} << 16 | uint32_t{payload[3]} << 24;
    }
    head.coarse_count = static_cast<int32_t>(word & 0x7FFF);
    head.fine_count = static_cast<int32_t>(word >> 15);

    const size_t flag_bytes = length > 4 ? std::min(length - 4, kSkipFlagBytes) : 0;
    head.skip_flags.fill(0xFF);
    if (flag_bytes > 0) std::copy_n(payload + 4, flag_bytes, head.skip_flags.begin());
    return head;
}

void vdec_read_symbols(const VdecCodes& codes, const uint8_t* payload, size_t length, VdecSymbols& symbols) {
    symbols.head = vdec_read_head(payload, length);
    const size_t counts[kGroupCount] = {
        vdec_groups[kYApprox].value_count,
        vdec_groups[kUApprox].value_count,
        vdec_groups[kVApprox].value_count,
        static_cast<size_t>(symbols.head.coarse_count),
        static_cast<size_t>(symbols.head.fine_count),
    };

    const size_t end = 8 * length;
    size_t bit_position = std::min(kFirstCodeBit, end);
    for (size_t group = 0; group < kGroupCount; ++group) {
        const VdecGroupInfo& info = vdec_groups[group];
        const auto read = [&](size_t count, int16_t* values) {
            huff_read_values(codes.trees[group], codes.lookups[group], info.sign_point, payload, length,
                             bit_position, count, values);
        };
        int16_t* values = symbols.values.data() + info.first_value;
        const size_t kept = std::min(counts[group], info.value_count);
        read(kept, values);
        std::fill(values + kept, values + info.value_count, int16_t{0});

        // The next group starts behind the surplus.
        constexpr size_t kDropped = 512;
        int16_t dropped[kDropped + kHuffValueSlack];
        for (size_t surplus = counts[group] - kept; surplus > 0 && bit_position < end;) {
            const size_t count = std::min(surplus, kDropped);
            read(count, dropped);
            surplus -= count;
        }
    }
}
