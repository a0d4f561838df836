// rig/world/names.h
// The simulator's own names of variables, units and events: it takes no notice of upper and lower case in them.
// Function without state: usable from any thread.
#pragma once

#include <algorithm>
#include <string_view>

namespace rig {

inline char lowerCase(char letter) {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

inline bool sameName(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](char one, char other) { return lowerCase(one) == lowerCase(other); });
}

} // namespace rig
