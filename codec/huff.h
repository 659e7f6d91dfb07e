// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

// Static Huffman codes, built from symbol counts (D. A. Huffman, "A Method for the Construction of
// Minimum-Redundancy Codes", 1952). Which of two equal weights goes where decides the codes, so the order of
// the heap's steps is part of the payload format.

// A code tree. Nodes 1 to n are leaves, leaf j standing for symbol j - 1; inner nodes are numbered from n + 1
// in the order in which they are made. Going left reads a 0 bit, going right a 1 bit.
struct HuffTree {
    uint32_t alphabet_size = 0;         // n
    uint32_t root = 0;                  // node number
    uint32_t used_symbols = 0;          // symbols with a count above 0
    std::unique_ptr<uint32_t[]> left;   // 2n entries, by node number; 0 for leaves
    std::unique_ptr<uint32_t[]> right;  // 2n entries
};

// Builds the code of an alphabet of n symbols from counts[0 … n - 1]; at least two of the counts must be
// above 0, and their sum must fit 32 bits. False when memory runs out; the tree is then empty.
bool huff_build(uint32_t n, const uint32_t* counts, HuffTree& tree);

// What huff_decode_symbol gives when the payload ends inside the code.
constexpr int32_t kHuffEndOfPayload = -1;

// Reads one code at `bit_position`, one bit a step, bit k of the payload being bit k mod 8 of byte k div 8
// (bit 0 is the least significant). Gives the symbol and moves the position past the code.
int32_t huff_decode_symbol(const HuffTree& tree, const uint8_t* payload, size_t length, size_t& bit_position);

// The same for a code of which the first bits have led to inner node `node`.
int32_t huff_decode_from(const HuffTree& tree, uint32_t node, const uint8_t* payload, size_t length,
                         size_t& bit_position);
