#pragma once

#include <charconv>
#include <optional>
#include <string_view>

namespace cloudsim {

/// Nothing unless the whole text is a number that fits.
template <class Number>
std::optional<Number> wholeNumber(std::string_view text) {
    Number number = 0;
    const char* begin = text.data();
    const char* behind = begin + text.size();
    auto [end, error] = std::from_chars(begin, behind, number);
    return error == std::errc() && end == behind ? std::optional(number) : std::nullopt;
}

} // namespace cloudsim
