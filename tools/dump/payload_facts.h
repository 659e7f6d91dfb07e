// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "codec/huff.h"
#include "codec/vdec_tables.h"

namespace tools {

// What a video record's payload says of itself, and where that does not fit together.
struct PayloadFacts {
    std::size_t bytes = 0;
    uint32_t coarse_count = 0;
    uint32_t fine_count = 0;
    int coded_blocks = 0;              // block positions whose skip flag is clear
    bool counts_out_of_range = false;  // more values than block positions can take
    bool counts_disagree = false;      // other counts than the skip flags ask for
    bool runs_short = false;           // ends before its last code
};

// Reads payloads without rebuilding pictures.
class PayloadInspector {
public:
    // Throws std::bad_alloc.
    PayloadInspector();

    PayloadFacts Inspect(std::span<const uint8_t> payload) const;

private:
    bool RunsShort(std::span<const uint8_t> payload, const PayloadFacts& facts) const;

    std::array<HuffTree, kGroupCount> trees_;
};

}  // namespace tools
