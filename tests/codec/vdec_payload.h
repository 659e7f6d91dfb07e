#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "codec/vdec_stages.h"

// The code of each symbol as '0' and '1', first bit first.
std::vector<std::string> CodesOf(const HuffTree& tree);

// Writes payloads, well-formed or not.
class PayloadWriter {
public:
    explicit PayloadWriter(const VdecCodes& codes);

    // A new payload: all positions skipped, no codes.
    void Start(uint32_t coarse_count, uint32_t fine_count);
    void ClearSkip(int block);
    void Put(VdecGroup group, int value);
    void PutRepeated(VdecGroup group, int value, size_t count);
    size_t BitCount() const { return m_bit_count; }
    const std::vector<uint8_t>& Bytes() const { return m_bytes; }

private:
    std::vector<std::string> m_codes[kGroupCount];
    std::vector<uint8_t> m_bytes;
    size_t m_bit_count = 0;
};

// A payload with random values in all groups and about `coded` of 300 block positions coded. Larger `spread`
// gives larger values and longer codes, and so a busier picture.
std::vector<uint8_t> RandomPayload(const VdecCodes& codes, uint32_t seed, int coded, double spread);

// Codes for every test of a program.
const VdecCodes& SharedCodes();
