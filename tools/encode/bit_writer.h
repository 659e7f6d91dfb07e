// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace tools {

// Writes bits into a caller's buffer, each byte filled from its least significant bit. Bits that no longer
// fit are counted but not stored, so a caller may ask size_in_bytes() whether all of it fitted.
class BitWriter {
public:
    explicit BitWriter(std::span<uint8_t> buffer) : buffer_(buffer) {}

    // Appends the `count` low bits of `bits` (at most 32), lowest first.
    void Write(uint32_t bits, unsigned count) {
        pending_ |= static_cast<uint64_t>(bits) << pending_count_;
        pending_count_ += count;
        bit_count_ += count;
        while (pending_count_ >= 8) FlushByte(8);
    }

    // Completes the last byte with zero bits.
    void Finish() {
        if (pending_count_ > 0) FlushByte(pending_count_);
    }

    // Bytes that everything written so far takes.
    std::size_t size_in_bytes() const { return (bit_count_ + 7) / 8; }

private:
    void FlushByte(unsigned used) {
        if (next_ < buffer_.size()) buffer_[next_] = static_cast<uint8_t>(pending_);
        ++next_;
        pending_ >>= 8;
        pending_count_ -= used;
    }

    std::span<uint8_t> buffer_;
    uint64_t pending_ = 0;
    unsigned pending_count_ = 0;
    std::size_t bit_count_ = 0;
    std::size_t next_ = 0;
};

}  // namespace tools
