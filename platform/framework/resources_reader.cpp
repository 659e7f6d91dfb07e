// SPDX-License-Identifier: MIT
#include "platform/framework/resources_reader.h"

#include <algorithm>

#include "platform/framework/unsupported.h"

namespace resources {
namespace {

// The program's texts have no characters beyond the first 65,536.
void AppendUtf8(std::string& out, unsigned unit) {
    if (unit >= 0xD800 && unit < 0xE000) Unsupported("character of a resource", unit);
    if (unit < 0x80) {
        out += static_cast<char>(unit);
        return;
    }
    if (unit < 0x800) {
        out += static_cast<char>(0xC0U | unit >> 6U);
    } else {
        out += static_cast<char>(0xE0U | unit >> 12U);
        out += static_cast<char>(0x80U | (unit >> 6U & 0x3FU));
    }
    out += static_cast<char>(0x80U | (unit & 0x3FU));
}

}  // namespace

std::span<const std::uint8_t> Reader::Bytes(std::size_t count) {
    if (count > Left()) Unsupported("resource", "cut short");
    m_position += count;
    return m_bytes.subspan(m_position - count, count);
}

std::uint16_t Reader::U16() {
    const auto b = Bytes(2);
    return static_cast<std::uint16_t>(b[0] | b[1] << 8);
}

std::uint32_t Reader::U32() {
    const std::uint32_t low = U16();
    return low | static_cast<std::uint32_t>(U16()) << 16U;
}

void Reader::Align4() {
    Skip(std::min((4 - m_position % 4) % 4, Left()));
}

std::string Reader::Text(std::size_t units) {
    std::string out;
    for (; units > 0; --units) AppendUtf8(out, U16());
    return out;
}

std::string Reader::TextZ() {
    std::string out;
    while (const unsigned unit = U16()) AppendUtf8(out, unit);
    return out;
}

Name Reader::NameOrNumber() {
    constexpr unsigned kNumberFollows = 0xFFFF;
    Reader ahead = *this;
    if (ahead.U16() != kNumberFollows) return {0, TextZ()};
    Skip(2);
    return {U16(), {}};
}

}  // namespace resources
