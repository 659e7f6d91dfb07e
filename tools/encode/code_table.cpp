// SPDX-License-Identifier: MIT
#include "tools/encode/code_table.h"

#include <new>

namespace tools {

CodeTable::CodeTable(const VdecGroupInfo& group)
    : lowest_(vdec_symbol_value(static_cast<int32_t>(group.alphabet_size) - 1, group.sign_point)),
      highest_(group.sign_point),
      codes_(group.alphabet_size) {
    HuffTree tree;
    if (!huff_build(group.alphabet_size, group.counts, tree)) throw std::bad_alloc();
    Collect(tree, tree.root, Code{}, group.sign_point);
}

void CodeTable::Collect(const HuffTree& tree, uint32_t node, Code prefix, int32_t sign_point) {
    if (node <= tree.alphabet_size) {
        const int32_t value = vdec_symbol_value(static_cast<int32_t>(node) - 1, sign_point);
        codes_[static_cast<uint32_t>(value - lowest_)] = prefix;
        return;
    }
    Collect(tree, tree.left[node], Code{prefix.bits, prefix.length + 1}, sign_point);
    Collect(tree, tree.right[node], Code{prefix.bits | 1U << prefix.length, prefix.length + 1}, sign_point);
}

}  // namespace tools
