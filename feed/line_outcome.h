// feed/line_outcome.h
// What becomes of a traffic line, and how many lines came to which end.
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <string_view>

/// What became of a line: accepted, or the cause of its end.
enum class LineOutcome {
    accepted,
    groundVehicle,
    doesNotParse,
    outOfRange,
    registrationTooLong,
    unwantedKind,
    hexidTooLow,
    notAirborneEnough,
    unwantedCallSign,
    nameless,
    groundNotWanted,
    refused, ///< by the engine, which takes no records now
};

inline constexpr std::size_t lineOutcomes = 12;

/// "accepted", "ground vehicle", ...
std::string_view nameOf(LineOutcome outcome);

/// A cause that took no line is left out.
using OutcomeCounts = std::map<LineOutcome, std::size_t>;

/// "accepted 102, out of range 1122" in the order of the enumeration; "none" without any line.
std::string textOf(const OutcomeCounts& counts);
/// The counts of such a text; nothing when it is none.
std::optional<OutcomeCounts> outcomeCountsFrom(std::string_view text);

/// Counts lines. One thread counts, any thread reads.
class LineCounter {
public:
    void count(LineOutcome outcome) { ++counts_[static_cast<std::size_t>(outcome)]; }
    void clear();
    OutcomeCounts counts() const;

private:
    std::array<std::atomic<std::size_t>, lineOutcomes> counts_{};
};
