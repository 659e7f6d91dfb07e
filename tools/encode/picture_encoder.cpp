// SPDX-License-Identifier: MIT
#include "tools/encode/picture_encoder.h"

#include <algorithm>
#include <cmath>

#include "tools/encode/forward_dwt.h"

namespace tools {
namespace {

// A block position's detail in one subband. The plane holds HL to the right of LL, LH below it, HH beside
// both.
struct DetailGroup {
    int level;
    bool high_along_rows;
    bool high_along_columns;
    VdecStep step;
};

// In the order in which a block position's values stand in the payload.
constexpr std::array<DetailGroup, 5> kDetailGroups = {{
    {kCoarseLevel, true, false, kStepCoarse},
    {kFineLevel, true, false, kStepFine},
    {kCoarseLevel, false, true, kStepCoarse},
    {kFineLevel, false, true, kStepFine},
    {kCoarseLevel, true, true, kStepCoarseDiagonal},
}};

// The step that each coarse value of a block position belongs to.
constexpr std::array<VdecStep, 3> kCoarseGroupSteps = {kStepCoarse, kStepCoarse, kStepCoarseDiagonal};
constexpr std::size_t kCoarsePerGroup = 4;

// A value of fewer steps than the dead zone becomes 0. Half a step is plain rounding; a payload that does not
// fit with that is tried with wider ones.
constexpr double kRoundingDeadZone = 0.5;
constexpr double kWidestDeadZone = 1.0;
constexpr double kDeadZoneIncrement = 1.0 / 32;

constexpr std::size_t kHeadBits = kPayloadHeadBytes * 8;

bool AllZero(std::span<const int16_t> values) {
    return std::all_of(values.begin(), values.end(), [](int16_t v) { return v == 0; });
}

int16_t Quantise(double coefficient, double step, double dead_zone, const CodeTable& code) {
    const double steps = coefficient / step;
    if (std::abs(steps) < dead_zone) return 0;
    return static_cast<int16_t>(
        std::clamp(static_cast<int32_t>(std::lround(steps)), code.lowest(), code.highest()));
}

double Square(double x) {
    return x * x;
}

}  // namespace

PictureEncoder::PictureEncoder(int quality, std::size_t most_bytes)
    : quality_(quality),
      most_bits_(most_bytes * 8),
      planes_(std::make_unique<ColourPlanes>()),
      quantised_(std::make_unique<QuantisedPicture>()) {
    codes_.reserve(kGroupCount);
    for (const VdecGroupInfo& group : vdec_groups) codes_.emplace_back(group);
}

std::span<const uint8_t> PictureEncoder::Encode(std::span<const uint8_t, kPictureBytes> bgr) {
    SplitColours(bgr, *planes_);
    auto& [y, u, v] = planes_->plane;
    ForwardDwt(y, kLumaLevels);
    ForwardDwt(u, kChromaLevels);
    ForwardDwt(v, kChromaLevels);

    QuantiseApproximation(y, kYApprox, kLumaLevels);
    QuantiseApproximation(u, kUApprox, kChromaLevels);
    QuantiseApproximation(v, kVApprox, kChromaLevels);

    std::size_t bits = 0;
    for (double dead_zone = kRoundingDeadZone; dead_zone <= kWidestDeadZone;
         dead_zone += kDeadZoneIncrement) {
        QuantiseDetail(y, dead_zone);
        bits = CountBits();
        if (bits <= most_bits_) break;
    }
    if (bits > most_bits_) DropLeastUsefulBlocks(bits - most_bits_);

    WritePayload();
    return std::span(payload_).first(payload_bytes_);
}

void PictureEncoder::QuantiseApproximation(std::span<const double, kPlaneValues> plane, VdecGroup group,
                                           int level) {
    const CodeTable& code = codes_[group];
    const int32_t step = quant_steps[quality_][group];
    // The decoder's products wrap at 16 bits; values that would are out of reach.
    const int32_t limit = INT16_MAX / step;
    std::size_t next = vdec_groups[group].first_value;
    const auto encode = [&](int x, int y, int32_t predicted) {
        const double coefficient = plane[static_cast<std::size_t>(y * kPictureWidth + x)];
        const auto steps = std::clamp(static_cast<int32_t>(std::lround(coefficient / step)), -limit, limit);
        const int32_t difference = std::clamp(steps - predicted, code.lowest(), code.highest());
        quantised_->approximation[next++] = static_cast<int16_t>(difference);
        return predicted + difference;
    };

    // The first value of a row is predicted from the one above it, every other from its left neighbour.
    int32_t first = 0;
    for (int y = 0; y < LevelHeight(level); ++y) {
        first = encode(0, y, first);
        int32_t left = first;
        for (int x = 1; x < LevelWidth(level); ++x) left = encode(x, y, left);
    }
}

void PictureEncoder::QuantiseDetail(std::span<const double, kPlaneValues> plane, double dead_zone) {
    for (std::size_t block = 0; block < kBlockCount; ++block) {
        const int column = static_cast<int>(block) % kBlockColumns;
        const int row = static_cast<int>(block) / kBlockColumns;
        auto coarse = quantised_->coarse[block].begin();
        auto fine = quantised_->fine[block].begin();
        for (const DetailGroup& group : kDetailGroups) {
            const bool is_fine = group.level == kFineLevel;
            const CodeTable& code = codes_[is_fine ? kFineDetail : kCoarseDetail];
            const int side = BlockSide(group.level);
            const int left = (group.high_along_rows ? LevelWidth(group.level) : 0) + side * column;
            const int top = (group.high_along_columns ? LevelHeight(group.level) : 0) + side * row;
            const double step = quant_steps[quality_][group.step];
            for (int i = 0; i < side * side; ++i) {
                const int x = left + i % side;
                const int y = top + i / side;
                const double coefficient = plane[static_cast<std::size_t>(y * kPictureWidth + x)];
                const int16_t value = Quantise(coefficient, step, dead_zone, code);
                if (is_fine) {
                    *fine++ = value;
                } else {
                    *coarse++ = value;
                }
            }
        }
        quantised_->skipped[block] = AllZero(quantised_->coarse[block]) && AllZero(quantised_->fine[block]);
    }
}

void PictureEncoder::DropLeastUsefulBlocks(std::size_t bits_over) {
    struct Candidate {
        std::size_t block;
        std::size_t bits;
        double energy_per_bit;
    };
    std::vector<Candidate> candidates;
    for (std::size_t block = 0; block < kBlockCount; ++block) {
        if (quantised_->skipped[block]) continue;
        double energy = 0;
        for (std::size_t i = 0; i < kCoarsePerBlock; ++i) {
            energy += Square(quantised_->coarse[block][i] *
                             quant_steps[quality_][kCoarseGroupSteps[i / kCoarsePerGroup]]);
        }
        for (const int16_t value : quantised_->fine[block])
            energy += Square(value * quant_steps[quality_][kStepFine]);
        const std::size_t bits = BlockBits(block);
        candidates.push_back({block, bits, energy / static_cast<double>(bits)});
    }
    std::sort(candidates.begin(), candidates.end(),
              [](const Candidate& a, const Candidate& b) { return a.energy_per_bit < b.energy_per_bit; });
    std::size_t saved = 0;
    for (const Candidate& candidate : candidates) {
        if (saved >= bits_over) break;
        quantised_->skipped[candidate.block] = true;
        saved += candidate.bits;
    }
}

std::size_t PictureEncoder::BlockBits(std::size_t block) const {
    std::size_t bits = 0;
    for (const int16_t value : quantised_->coarse[block]) bits += codes_[kCoarseDetail].LengthOf(value);
    for (const int16_t value : quantised_->fine[block]) bits += codes_[kFineDetail].LengthOf(value);
    return bits;
}

std::size_t PictureEncoder::CountBits() const {
    std::size_t bits = kHeadBits;
    for (const VdecGroup group : {kYApprox, kUApprox, kVApprox}) {
        const VdecGroupInfo& info = vdec_groups[group];
        for (std::size_t i = 0; i < info.value_count; ++i) {
            bits += codes_[group].LengthOf(quantised_->approximation[info.first_value + i]);
        }
    }
    for (std::size_t block = 0; block < kBlockCount; ++block) {
        if (!quantised_->skipped[block]) bits += BlockBits(block);
    }
    return bits;
}

void PictureEncoder::WritePayload() {
    const auto coded =
        static_cast<uint32_t>(std::count(quantised_->skipped.begin(), quantised_->skipped.end(), false));
    BitWriter bits(payload_);
    bits.Write(coded * kCoarsePerBlock, 15);
    bits.Write(coded * kFinePerBlock, 17);
    for (const bool skipped : quantised_->skipped) bits.Write(skipped ? 1 : 0, 1);
    bits.Write(0, static_cast<unsigned>(kSkipFlagBytes * 8 - kBlockCount));

    for (const VdecGroup group : {kYApprox, kUApprox, kVApprox}) {
        const VdecGroupInfo& info = vdec_groups[group];
        for (std::size_t i = 0; i < info.value_count; ++i) {
            codes_[group].Write(quantised_->approximation[info.first_value + i], bits);
        }
    }
    for (std::size_t block = 0; block < kBlockCount; ++block) {
        if (quantised_->skipped[block]) continue;
        for (const int16_t value : quantised_->coarse[block]) codes_[kCoarseDetail].Write(value, bits);
    }
    for (std::size_t block = 0; block < kBlockCount; ++block) {
        if (quantised_->skipped[block]) continue;
        for (const int16_t value : quantised_->fine[block]) codes_[kFineDetail].Write(value, bits);
    }
    bits.Finish();
    payload_bytes_ = bits.size_in_bytes();
}

}  // namespace tools
