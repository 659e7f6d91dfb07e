// SPDX-License-Identifier: MIT
#include "codec/huff_lookup.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "codec/vdec_tables.h"

namespace {

constexpr uint64_t kIndexMask = (uint64_t{1} << kHuffLookupBits) - 1;

// A window holds at least 57 bits from the position on, enough for this many look-ups.
constexpr int kLookupsPerWindow = 57 / kHuffLookupBits;

HuffLookup::Entry MakeEntry(const HuffTree& tree, int32_t sign_point, uint32_t bits) {
    HuffLookup::Entry entry = {};
    uint32_t node = tree.root;
    for (unsigned read = 1; read <= kHuffLookupBits; ++read, bits >>= 1) {
        node = (bits & 1) != 0 ? tree.right[node] : tree.left[node];
        if (node > tree.alphabet_size) continue;
        const int32_t value = vdec_symbol_value(static_cast<int32_t>(node) - 1, sign_point);
        entry.values[entry.value_count++] = static_cast<int16_t>(value);
        entry.bits = static_cast<uint8_t>(read);
        if (entry.value_count == HuffLookup::kMostValues) break;
        node = tree.root;
    }
    if (entry.value_count == 0) {
        entry.values[0] = static_cast<int16_t>(node);
        entry.bits = kHuffLookupBits;
    }
    return entry;
}

// The bits from bit_position on, first bit lowest; zeros behind the payload's end.
uint64_t LoadWindow(const uint8_t* payload, size_t length, size_t bit_position) {
    const size_t byte = bit_position / 8;
    uint64_t window = 0;
    if constexpr (std::endian::native == std::endian::little) {
        std::memcpy(&window, payload + byte, std::min<size_t>(8, length - byte));
    } else {
        for (size_t i = std::min<size_t>(8, length - byte); i-- > 0;)
            window = window << 8 | payload[byte + i];
    }
    return window >> (bit_position % 8);
}

}  // namespace

void huff_build_lookup(const HuffTree& tree, int32_t sign_point, HuffLookup& lookup) {
    for (uint32_t bits = 0; bits < lookup.entries.size(); ++bits) {
        lookup.entries[bits] = MakeEntry(tree, sign_point, bits);
    }
}

void huff_read_values(const HuffTree& tree, const HuffLookup& lookup, int32_t sign_point,
                      const uint8_t* payload, size_t length, size_t& bit_position, size_t count,
                      int16_t* values) {
    const size_t end = 8 * length;
    while (count > 0) {
        // Far from both ends: several look-ups without a test between them but for long codes.
        uint32_t node = tree.root;
        while (count >= kLookupsPerWindow * HuffLookup::kMostValues && bit_position + 64 <= end) {
            uint64_t window = LoadWindow(payload, length, bit_position);
            const HuffLookup::Entry* entry = nullptr;
            for (int i = 0; i < kLookupsPerWindow; ++i) {
                entry = &lookup.entries[window & kIndexMask];
                std::memcpy(values, entry, sizeof(*entry));
                values += entry->value_count;
                count -= entry->value_count;
                bit_position += entry->bits;
                window >>= entry->bits;
                if (entry->value_count == 0) break;
            }
            if (entry->value_count == 0) {
                node = static_cast<uint32_t>(entry->values[0]);
                break;
            }
        }
        if (count == 0) return;

        // Near an end: one look-up, when all its codes are wanted and lie within the payload.
        if (node == tree.root && bit_position < end) {
            const HuffLookup::Entry& entry =
                lookup.entries[LoadWindow(payload, length, bit_position) & kIndexMask];
            if (entry.value_count > 0 && entry.value_count <= count && bit_position + entry.bits <= end) {
                std::memcpy(values, &entry, sizeof(entry));
                values += entry.value_count;
                count -= entry.value_count;
                bit_position += entry.bits;
                continue;
            }
        }

        const int32_t symbol = huff_decode_from(tree, node, payload, length, bit_position);
        if (symbol == kHuffEndOfPayload) {
            std::fill_n(values, count, int16_t{0});
            return;
        }
        *values++ = static_cast<int16_t>(vdec_symbol_value(symbol, sign_point));
        --count;
    }
}
