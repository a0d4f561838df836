// liveries/ascii_text.h
// Small text helpers for names and codes; only the letters A to Z know upper and lower case. Usable from any thread.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

inline std::string asciiUpper(std::string_view text) {
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(),
                   [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; });
    return result;
}

/// Without blanks, tabs and line ends at both ends.
inline std::string_view trimmed(std::string_view text) {
    constexpr std::string_view blanks = " \t\n\r";
    const std::size_t first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

/// The parts between the commas, empty ones too; one empty part for an empty text.
inline std::vector<std::string_view> splitAtCommas(std::string_view text) {
    std::vector<std::string_view> parts;
    for (;;) {
        const std::size_t comma = text.find(',');
        parts.push_back(text.substr(0, comma));
        if (comma == std::string_view::npos) {
            return parts;
        }
        text.remove_prefix(comma + 1);
    }
}
