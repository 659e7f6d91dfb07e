// SPDX-License-Identifier: MIT
// Little-endian reader over the bytes of one resource; inside of the resource reader only.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace resources {

// A name in compiled resources: a number, or a text (UTF-8), or nothing at all (number 0 and no text).
struct Name {
    unsigned number = 0;
    std::string text;
};

// Takes values off the front of a span. One that does not fit into what is left ends the program with a
// message.
class Reader {
public:
    explicit Reader(std::span<const std::uint8_t> bytes) : m_bytes(bytes) {}

    std::size_t Left() const { return m_bytes.size() - m_position; }

    std::uint16_t U16();
    std::uint32_t U32();
    int I16() { return static_cast<std::int16_t>(U16()); }
    std::int32_t I32() { return static_cast<std::int32_t>(U32()); }

    std::span<const std::uint8_t> Bytes(std::size_t count);
    void Skip(std::size_t count) { Bytes(count); }
    // Moves on to the next multiple of four, counted from the start of the span, or to its end.
    void Align4();

    std::string Text(std::size_t units);  // UTF-16 of so many units
    std::string TextZ();                  // UTF-16 up to its zero
    Name NameOrNumber();                  // 0xFFFF and a number, or UTF-16 up to its zero

private:
    std::span<const std::uint8_t> m_bytes;
    std::size_t m_position = 0;
};

}  // namespace resources
