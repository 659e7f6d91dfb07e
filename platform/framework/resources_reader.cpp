#include "platform/framework/resources_reader.h"

namespace resources {
namespace {

void AppendUtf8(std::string& out, std::uint32_t code) {
    const auto put = [&out](std::uint32_t byte) { out.push_back(static_cast<char>(byte)); };
    if (code < 0x80) {
        put(code);
    } else if (code < 0x800) {
        put(0xC0U | code >> 6U);
        put(0x80U | (code & 0x3FU));
    } else if (code < 0x10000) {
        put(0xE0U | code >> 12U);
        put(0x80U | (code >> 6U & 0x3FU));
        put(0x80U | (code & 0x3FU));
    } else {
        put(0xF0U | code >> 18U);
        put(0x80U | (code >> 12U & 0x3FU));
        put(0x80U | (code >> 6U & 0x3FU));
        put(0x80U | (code & 0x3FU));
    }
}

}  // namespace

std::span<const std::uint8_t> Reader::Bytes(std::size_t count) {
    if (!ok_ || count > Left()) {
        ok_ = false;
        return {};
    }
    const auto taken = bytes_.subspan(position_, count);
    position_ += count;
    return taken;
}

std::uint8_t Reader::U8() {
    const auto b = Bytes(1);
    return b.empty() ? std::uint8_t{0} : b[0];
}

std::uint16_t Reader::U16() {
    const auto b = Bytes(2);
    return b.empty() ? std::uint16_t{0} : static_cast<std::uint16_t>(b[0] | b[1] << 8);
}

std::uint32_t Reader::U32() {
    const auto b = Bytes(4);
    if (b.empty()) return 0;
    return b[0] | static_cast<std::uint32_t>(b[1]) << 8U | static_cast<std::uint32_t>(b[2]) << 16U |
           static_cast<std::uint32_t>(b[3]) << 24U;
}

void Reader::Align4() {
    Skip((4 - position_ % 4) % 4);
}

std::string Reader::Text(std::size_t units) {
    if (units > Left() / 2) ok_ = false;
    if (!ok_) return {};
    std::string out;
    std::uint32_t high = 0;  // the first half of a pair that waits for its second
    for (; units > 0; --units) {
        const std::uint32_t unit = U16();
        const bool second = unit >= 0xDC00 && unit < 0xE000;
        if (high != 0 && second) {
            AppendUtf8(out, 0x10000U + ((high - 0xD800U) << 10U) + (unit - 0xDC00U));
            high = 0;
            continue;
        }
        if (high != 0) AppendUtf8(out, 0xFFFD);
        high = unit >= 0xD800 && unit < 0xDC00 ? unit : 0;
        if (high == 0) AppendUtf8(out, second ? 0xFFFDU : unit);
    }
    if (high != 0) AppendUtf8(out, 0xFFFD);
    return out;
}

std::string Reader::TextZ() {
    std::size_t units = 0;
    const auto rest = bytes_.subspan(position_);
    while (2 * units + 1 < rest.size() && (rest[2 * units] | rest[2 * units + 1]) != 0) ++units;
    if (2 * units + 1 >= rest.size()) ok_ = false;  // no zero before the end
    std::string text = Text(units);
    Skip(2);
    return text;
}

Name Reader::NameOrNumber() {
    Name name;
    if (Left() >= 2 && bytes_[position_] == 0xFF && bytes_[position_ + 1] == 0xFF) {
        Skip(2);
        name.number = U16();
    } else {
        name.text = TextZ();
    }
    return name;
}

}  // namespace resources
