// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "codec/huff.h"

// Reads the symbols of one code by table: the next kHuffLookupBits bits select the values of all codes that
// are complete within them. Longer codes go on in the tree from where the bits lead.
constexpr unsigned kHuffLookupBits = 11;

struct HuffLookup {
    static constexpr size_t kMostValues = 7;

    // The values come first, so that an entry can be stored whole where the values belong.
    struct Entry {
        std::array<int16_t, kMostValues> values;  // values[0] is a tree node when value_count is 0
        uint8_t value_count;
        uint8_t bits;  // used by the values, or kHuffLookupBits when there is none
    };
    static_assert(sizeof(Entry) == 16);

    std::array<Entry, size_t{1} << kHuffLookupBits> entries;
};

// Fills the table. Symbols stand for values as vdec_symbol_value says. No reference to `tree` is kept.
void huff_build_lookup(const HuffTree& tree, int32_t sign_point, HuffLookup& lookup);

// How many values huff_read_values may write past the last one asked for.
constexpr size_t kHuffValueSlack = sizeof(HuffLookup::Entry) / sizeof(int16_t) - 1;

// Reads `count` codes from `bit_position` on and stores their values; `values` has room for kHuffValueSlack
// more, which are left undefined. When the payload ends first, the values that are missing are 0 and the
// position is the payload's end, where later reads end at once.
void huff_read_values(const HuffTree& tree, const HuffLookup& lookup, int32_t sign_point,
                      const uint8_t* payload, size_t length, size_t& bit_position, size_t count,
                      int16_t* values);
