// core/hour_set.h
// Half-hour slots of a UTC day, and the text form that the airport files hold them in.
// Value type without state: usable from any thread.
#pragma once

#include <cstdint>
#include <string_view>

/// A set of half-hour slots 0 to 47; slot n begins n/2 hours after midnight UTC.
class HourSet {
public:
    static constexpr int slotsPerDay = 48;

    constexpr bool contains(int slot) const { return (bits_ >> slot & 1) != 0; }
    constexpr void insert(int slot) { bits_ |= std::uint64_t{1} << slot; }
    constexpr bool empty() const { return bits_ == 0; }
    friend constexpr bool operator==(HourSet, HourSet) = default;

private:
    std::uint64_t bits_ = 0;
};

/// Parses "3:7" (an inclusive range) or "1,4,9" (a list) of slots 0 to 47.
/// A faulty range gives the empty set, a faulty member of a list is left out; each fault is one error line in the log.
/// What has only blanks between two commas is no member of the list, and no fault.
HourSet gf_hours2bitset(std::string_view text);
