// engine/printed_names.h
// Names of the values of an enumeration that counts from 0. Immutable: usable from any thread.
#pragma once

#include <array>
#include <cstddef>
#include <stdexcept>
#include <string>

/// Throws std::out_of_range "invalid unordered_map<K, T> key" when the value is not below `count`.
template <std::size_t count, typename Enumeration>
void requireIndex(Enumeration value) {
    const auto number = static_cast<long long>(value);
    if (number < 0 || number >= static_cast<long long>(count)) {
        throw std::out_of_range("invalid unordered_map<K, T> key");
    }
}

template <std::size_t count>
class PrintedNames {
public:
    template <typename... Names>
    explicit PrintedNames(Names... names) : names_{names...} {
        static_assert(sizeof...(Names) == count);
    }

    /// Throws as requireIndex does.
    template <typename Enumeration>
    const std::string& at(Enumeration value) const {
        requireIndex<count>(value);
        return names_[static_cast<std::size_t>(value)];
    }

private:
    std::array<std::string, count> names_;
};
