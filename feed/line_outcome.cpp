// feed/line_outcome.cpp
#include "feed/line_outcome.h"

#include <algorithm>
#include <charconv>
#include <fmt/format.h>

namespace {

constexpr std::array<std::string_view, lineOutcomes> names{
    "accepted",
    "ground vehicle",
    "does not parse",
    "out of range",
    "registration too long",
    "unwanted kind",
    "identity too low",
    "not airborne enough",
    "unwanted call sign",
    "neither call sign nor registration",
    "on the ground elsewhere",
    "refused",
};

constexpr std::string_view separator = ", ";
constexpr std::string_view nothing = "none";

/// Takes "out of range 1122" into the counts; false when it is no such text, or the outcome has a count already.
bool takeCount(std::string_view text, OutcomeCounts& counts) {
    const std::size_t blank = text.rfind(' ');
    const auto* const name = std::find(names.begin(), names.end(), text.substr(0, blank));
    if (blank == std::string_view::npos || name == names.end()) {
        return false;
    }
    std::size_t count = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data() + blank + 1, end, count);
    return error == std::errc{} && stop == end &&
           counts.emplace(static_cast<LineOutcome>(name - names.begin()), count).second;
}

} // namespace

std::string_view nameOf(LineOutcome outcome) {
    return names.at(static_cast<std::size_t>(outcome));
}

std::string textOf(const OutcomeCounts& counts) {
    std::string text;
    for (const auto& [outcome, count] : counts) {
        text += fmt::format("{}{} {}", text.empty() ? "" : separator, nameOf(outcome), count);
    }
    return text.empty() ? std::string(nothing) : text;
}

std::optional<OutcomeCounts> outcomeCountsFrom(std::string_view text) {
    OutcomeCounts counts;
    if (text == nothing) {
        return counts;
    }
    for (;;) {
        const std::size_t end = text.find(separator);
        if (!takeCount(text.substr(0, end), counts)) {
            return std::nullopt;
        }
        if (end == std::string_view::npos) {
            return counts;
        }
        text.remove_prefix(end + separator.size());
    }
}

void LineCounter::clear() {
    for (std::atomic<std::size_t>& count : counts_) {
        count = 0;
    }
}

OutcomeCounts LineCounter::counts() const {
    OutcomeCounts result;
    for (std::size_t i = 0; i < lineOutcomes; ++i) {
        if (const std::size_t count = counts_[i]; count != 0) {
            result.emplace(static_cast<LineOutcome>(i), count);
        }
    }
    return result;
}
