// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <vector>

#include "codec/huff.h"
#include "codec/vdec_tables.h"
#include "tools/encode/bit_writer.h"

namespace tools {

// The codes of one symbol group, read off the very tree that the decoder walks, looked up by value.
class CodeTable {
public:
    // Throws std::bad_alloc when memory runs out.
    explicit CodeTable(const VdecGroupInfo& group);

    // The values that the group's alphabet can say.
    int32_t lowest() const { return lowest_; }
    int32_t highest() const { return highest_; }

    // Code length in bits of a value from lowest() to highest().
    unsigned LengthOf(int32_t value) const { return CodeOf(value).length; }
    void Write(int32_t value, BitWriter& bits) const {
        const Code& code = CodeOf(value);
        bits.Write(code.bits, code.length);
    }

private:
    struct Code {
        uint32_t bits = 0;  // the bit that is read first is the lowest
        unsigned length = 0;
    };

    const Code& CodeOf(int32_t value) const { return codes_[static_cast<uint32_t>(value - lowest_)]; }
    void Collect(const HuffTree& tree, uint32_t node, Code prefix, int32_t sign_point);

    int32_t lowest_;
    int32_t highest_;
    std::vector<Code> codes_;
};

}  // namespace tools
