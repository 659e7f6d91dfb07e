// SPDX-License-Identifier: MIT
#include "codec/huff.h"

#include <new>
#include <utility>

namespace {

// A binary min-heap of node numbers, 1-based, ordered by weight. `heap` has count + 1 entries.
void SiftDown(uint32_t* heap, uint32_t count, uint32_t position, const uint32_t* weights) {
    const uint32_t node = heap[position];
    while (position <= count / 2) {
        uint32_t child = 2 * position;
        if (child < count && weights[heap[child]] > weights[heap[child + 1]]) ++child;
        if (weights[node] <= weights[heap[child]]) break;
        heap[position] = heap[child];
        position = child;
    }
    heap[position] = node;
}

}  // namespace

bool huff_build(uint32_t n, const uint32_t* counts, HuffTree& tree) {
    tree = HuffTree();
    const uint32_t nodes = 2 * n;
    std::unique_ptr<uint32_t[]> left(new (std::nothrow) uint32_t[nodes]());
    std::unique_ptr<uint32_t[]> right(new (std::nothrow) uint32_t[nodes]());
    std::unique_ptr<uint32_t[]> weights(new (std::nothrow) uint32_t[nodes]());
    std::unique_ptr<uint32_t[]> heap(new (std::nothrow) uint32_t[n + 1]());
    if (!left || !right || !weights || !heap) return false;

    uint32_t waiting = 0;
    for (uint32_t leaf = 1; leaf <= n; ++leaf) {
        weights[leaf] = counts[leaf - 1];
        if (weights[leaf] != 0) heap[++waiting] = leaf;
    }
    tree.used_symbols = waiting;
    for (uint32_t position = waiting / 2; position >= 1; --position) {
        SiftDown(heap.get(), waiting, position, weights.get());
    }

    uint32_t node = n;
    while (waiting > 1) {
        const uint32_t lightest = heap[1];
        heap[1] = heap[waiting--];
        SiftDown(heap.get(), waiting, 1, weights.get());

        ++node;
        weights[node] = weights[heap[1]] + weights[lightest];
        left[node] = lightest;
        right[node] = heap[1];
        heap[1] = node;
        SiftDown(heap.get(), waiting, 1, weights.get());
    }

    tree.alphabet_size = n;
    tree.root = node;
    tree.left = std::move(left);
    tree.right = std::move(right);
    return true;
}

int32_t huff_decode_from(const HuffTree& tree, uint32_t node, const uint8_t* payload, size_t length,
                         size_t& bit_position) {
    do {
        if (bit_position / 8 >= length) return kHuffEndOfPayload;
        const bool bit = ((payload[bit_position / 8] >> (bit_position % 8)) & 1) != 0;
        ++bit_position;
        node = bit ? tree.right[node] : tree.left[node];
    } while (node > tree.alphabet_size);
    return static_cast<int32_t>(node) - 1;
}

int32_t huff_decode_symbol(const HuffTree& tree, const uint8_t* payload, size_t length,
                           size_t& bit_position) {
    return huff_decode_from(tree, tree.root, payload, length, bit_position);
}
