// SPDX-License-Identifier: MIT
// The order in which a person counts names: "message 2" before "message 10".
#pragma once

#include <string_view>

namespace natural_order {

constexpr bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

constexpr unsigned char Lower(char c) {
    return static_cast<unsigned char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
}

// The digits at the start, without leading zeros, parted from the text.
constexpr std::string_view TakeNumber(std::string_view& text) {
    std::string_view digits = text;
    while (!text.empty() && IsDigit(text.front())) text.remove_prefix(1);
    digits.remove_suffix(text.size());
    while (digits.size() > 1 && digits.front() == '0') digits.remove_prefix(1);
    return digits;
}

}  // namespace natural_order

// A strict order of all names, of any bytes: numbers by their values, however long, letters (those of ASCII)
// in either case alike; names that are alike so far by their bytes.
constexpr bool NaturalLess(std::string_view a, std::string_view b) {
    using namespace natural_order;
    std::string_view x = a;
    std::string_view y = b;
    while (!x.empty() && !y.empty()) {
        if (IsDigit(x.front()) && IsDigit(y.front())) {
            const std::string_view m = TakeNumber(x);
            const std::string_view n = TakeNumber(y);
            if (m.size() != n.size()) return m.size() < n.size();
            if (m != n) return m < n;
            continue;
        }
        if (Lower(x.front()) != Lower(y.front())) return Lower(x.front()) < Lower(y.front());
        x.remove_prefix(1);
        y.remove_prefix(1);
    }
    if (x.empty() != y.empty()) return x.empty();
    return a < b;
}
