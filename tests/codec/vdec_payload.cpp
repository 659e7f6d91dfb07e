#include "tests/codec/vdec_payload.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <random>

namespace {

void CollectCodes(const HuffTree& tree, uint32_t node, const std::string& code,
                  std::vector<std::string>& codes) {
    if (node <= tree.alphabet_size) {
        codes[node - 1] = code;
        return;
    }
    CollectCodes(tree, tree.left[node], code + '0', codes);
    CollectCodes(tree, tree.right[node], code + '1', codes);
}

}  // namespace

std::vector<std::string> CodesOf(const HuffTree& tree) {
    std::vector<std::string> codes(tree.alphabet_size);
    CollectCodes(tree, tree.root, "", codes);
    return codes;
}

PayloadWriter::PayloadWriter(const VdecCodes& codes) {
    for (size_t group = 0; group < kGroupCount; ++group) m_codes[group] = CodesOf(codes.trees[group]);
    Start(0, 0);
}

void PayloadWriter::Start(uint32_t coarse_count, uint32_t fine_count) {
    const uint32_t word = coarse_count | fine_count << 15;
    m_bytes.assign(kPayloadHeadBytes, 0xFF);
    for (size_t i = 0; i < 4; ++i) m_bytes[i] = static_cast<uint8_t>(word >> (8 * i));
    m_bit_count = 8 * kPayloadHeadBytes;
}

void PayloadWriter::ClearSkip(int block) {
    uint8_t& flags = m_bytes[4 + static_cast<size_t>(block) / 8];
    flags = static_cast<uint8_t>(flags & ~(1U << (block % 8)));
}

void PayloadWriter::Put(VdecGroup group, int value) {
    const int symbol = value >= 0 ? value : vdec_groups[group].sign_point - value;
    for (const char bit : m_codes[group].at(static_cast<size_t>(symbol))) {
        if (m_bit_count % 8 == 0) m_bytes.push_back(0);
        if (bit == '1') m_bytes.back() = static_cast<uint8_t>(m_bytes.back() | 1U << (m_bit_count % 8));
        ++m_bit_count;
    }
}

void PayloadWriter::PutRepeated(VdecGroup group, int value, size_t count) {
    for (size_t i = 0; i < count; ++i) Put(group, value);
}

std::vector<uint8_t> RandomPayload(const VdecCodes& codes, uint32_t seed, int coded, double spread) {
    std::mt19937 random(seed);
    PayloadWriter writer(codes);
    std::vector<int> blocks;
    for (int block = 0; block < kBlockCount; ++block) {
        if (std::uniform_int_distribution<int>(0, kBlockCount - 1)(random) < coded) blocks.push_back(block);
    }
    const size_t coarse = blocks.size() * kCoarsePerBlock;
    const size_t fine = blocks.size() * kFinePerBlock;
    writer.Start(static_cast<uint32_t>(coarse), static_cast<uint32_t>(fine));
    for (const int block : blocks) writer.ClearSkip(block);

    const auto put = [&](VdecGroup group, size_t count, double deviation) {
        const VdecGroupInfo& info = vdec_groups[group];
        std::normal_distribution<double> normal(0, deviation * spread);
        const int most = info.sign_point;
        const int least = info.sign_point - static_cast<int>(info.alphabet_size) + 1;
        for (size_t i = 0; i < count; ++i) {
            writer.Put(group, std::clamp(static_cast<int>(std::lround(normal(random))), least, most));
        }
    };
    put(kYApprox, 1200, 20);
    put(kUApprox, 300, 3);
    put(kVApprox, 300, 3);
    put(kCoarseDetail, coarse, 3);
    put(kFineDetail, fine, 1);
    return writer.Bytes();
}

const VdecCodes& SharedCodes() {
    static const std::unique_ptr<VdecCodes> codes = [] {
        auto fresh = std::make_unique<VdecCodes>();
        if (!vdec_build_codes(*fresh)) fresh.reset();
        return fresh;
    }();
    return *codes;
}
