// core/text_hash.h
// The hash of text keys: FNV-1a, 64 bit, over the key's bytes. Function object without state: usable from any thread.
#pragma once

#include <cstdint>
#include <string_view>

/// Together with std::equal_to<> a table takes views as keys without building a string.
struct TextHash {
    using is_transparent = void;

    constexpr std::uint64_t operator()(std::string_view text) const {
        std::uint64_t hash = 0xcbf29ce484222325;
        for (const char c : text) {
            hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001b3;
        }
        return hash;
    }
};
