// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "codec/message_format.h"
#include "codec/picture_geometry.h"
#include "codec/vdec_tables.h"
#include "tools/encode/code_table.h"
#include "tools/encode/colour_planes.h"

namespace tools {

// The values of a picture as its payload says them.
struct QuantisedPicture {
    // Differences of the approximation bands: Y, then U, then V.
    std::array<int16_t, kCoarseStart> approximation;
    // Detail of each block position, in the order of the payload.
    std::array<std::array<int16_t, kCoarsePerBlock>, kBlockCount> coarse;
    std::array<std::array<int16_t, kFinePerBlock>, kBlockCount> fine;
    std::array<bool, kBlockCount> skipped;
};

// Writes the payload of one picture: the decoder's stages, each reversed, in reverse order.
//
// Values are rounded to the nearest step. A block position whose detail all rounds to zero is skipped. The
// approximation bands are predicted from what the decoder will have, so that a difference that the alphabet
// cannot say costs its neighbours nothing that they can make up for. A payload that would be too long loses
// detail (first the small values, then the blocks that give least for their bits), so every picture fits.
class PictureEncoder {
public:
    // `quality` is 0 to 3, the level that the payload has to be decoded at. `most_bytes` is what a payload
    // may take, at most kMaxPayloadBytes; the approximation bands alone, which are always written whole,
    // take up to 4167. Throws std::bad_alloc.
    explicit PictureEncoder(int quality, std::size_t most_bytes = kMaxPayloadBytes);

    // Encodes rows of B, G, R bytes, the bottom row first. The payload stays valid until the next call.
    std::span<const uint8_t> Encode(std::span<const uint8_t, kPictureBytes> bgr);

    // The values behind the last payload.
    const QuantisedPicture& quantised() const { return *quantised_; }

private:
    void QuantiseApproximation(std::span<const double, kPlaneValues> plane, VdecGroup group, int level);
    void QuantiseDetail(std::span<const double, kPlaneValues> plane, double dead_zone);
    void DropLeastUsefulBlocks(std::size_t bits_over);
    std::size_t BlockBits(std::size_t block) const;
    std::size_t CountBits() const;
    void WritePayload();

    int quality_;
    std::size_t most_bits_;
    std::vector<CodeTable> codes_;  // by VdecGroup
    std::unique_ptr<ColourPlanes> planes_;
    std::unique_ptr<QuantisedPicture> quantised_;
    std::array<uint8_t, kMaxPayloadBytes> payload_;
    std::size_t payload_bytes_ = 0;
};

}  // namespace tools
