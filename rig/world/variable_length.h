// rig/world/variable_length.h
// Whole numbers of variable length: seven bits a byte, the low ones first, the high bit says that more follow. Signed
// ones are folded, so that small ones of either sign are short. Functions without state: usable from any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace rig {

inline void appendVariableLength(std::string& to, std::uint64_t value) {
    while (value >= 0x80) {
        to += static_cast<char>((value & 0x7F) | 0x80);
        value >>= 7;
    }
    to += static_cast<char>(value);
}

constexpr std::uint64_t folded(std::int64_t value) {
    return (static_cast<std::uint64_t>(value) << 1) ^ (value < 0 ? ~std::uint64_t{0} : 0);
}

constexpr std::int64_t unfolded(std::uint64_t value) {
    return static_cast<std::int64_t>((value >> 1) ^ (value & 1 ? ~std::uint64_t{0} : 0));
}

} // namespace rig
