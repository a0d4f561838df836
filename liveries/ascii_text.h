// liveries/ascii_text.h
// Names and codes in capitals; only the letters A to Z know upper and lower case. Usable from any thread.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>

inline std::string asciiUpper(std::string_view text) {
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(),
                   [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; });
    return result;
}
