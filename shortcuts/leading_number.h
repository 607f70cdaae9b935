// Numbers in the driver's shortcut definitions and in stored shortcut texts, read as the C
// library's text-to-integer conversions read them: leading blanks, a sign, then digits up to the
// first other character; 0 without digits. Out-of-range numbers saturate instead of overflowing.
#pragma once

#include <cstdint>
#include <string_view>

namespace zx {

template <typename Char>
int32_t LeadingNumber(std::basic_string_view<Char> text) noexcept {
    const auto isBlank = [](Char c) { return c == ' ' || (c >= '\t' && c <= '\r'); };
    size_t at = 0;
    while (at < text.size() && isBlank(text[at])) ++at;
    const bool negative = at < text.size() && text[at] == '-';
    if (at < text.size() && (text[at] == '-' || text[at] == '+')) ++at;
    int64_t value = 0;
    for (; at < text.size() && text[at] >= '0' && text[at] <= '9' && value <= INT32_MAX; ++at) {
        value = value * 10 + (text[at] - '0');
    }
    if (negative) return value > INT32_MAX ? INT32_MIN : static_cast<int32_t>(-value);
    return value > INT32_MAX ? INT32_MAX : static_cast<int32_t>(value);
}

}  // namespace zx
