// core/hour_set.cpp
#include "core/hour_set.h"

#include <algorithm>
#include <optional>
#include <vector>

#include <fmt/format.h>

#include "core/log.h"
#include "core/number_text.h"
#include "core/text_parts.h"

namespace {

/// The trimmed parts between the separators; a part without a character is none.
std::vector<std::string_view> filledPartsOf(std::string_view text, char separator) {
    std::vector<std::string_view> parts;
    for (const std::string_view part : partsOf(text, separator)) {
        if (const std::string_view inner = trimmed(part); !inner.empty()) {
            parts.push_back(inner);
        }
    }
    return parts;
}

/// The slot that a part of `text` names; nothing, and an error line, when it names none.
std::optional<int> lf_slot(std::string_view part, std::string_view text) {
    const std::optional<int> slot = parseInt(part);
    if (!slot || *slot < 0 || *slot >= HourSet::slotsPerDay) {
        logError(fmt::format("{} invalid hour '{}' in {}", "operator ()", part, text));
        return std::nullopt;
    }
    return slot;
}

HourSet lf_slotsFromTo(int first, int last) {
    HourSet slots;
    for (int slot = first; slot <= last; ++slot) {
        slots.insert(slot);
    }
    return slots;
}

HourSet lf_range(std::string_view text) {
    if (std::count(text.begin(), text.end(), ':') > 1) {
        logError(fmt::format("{} more than one colon char in: {}", "gf_hours2bitset", text));
        return {};
    }
    const std::vector<std::string_view> parts = filledPartsOf(text, ':');
    if (parts.empty()) {
        logError(fmt::format("{} invalid range format in {}", "gf_hours2bitset", text));
        return {};
    }
    const std::optional<int> first = lf_slot(parts.front(), text);
    const std::optional<int> last = parts.size() == 1 ? first : lf_slot(parts.back(), text);
    if (!first || !last) {
        return {};
    }
    if (*first > *last) {
        logError(fmt::format("{} descending range not allowed ({}:{} in {})", "gf_hours2bitset", *first, *last, text));
        return {};
    }
    return lf_slotsFromTo(*first, *last);
}

HourSet lf_list(std::string_view text) {
    HourSet slots;
    for (const std::string_view part : filledPartsOf(text, ',')) {
        if (const std::optional<int> slot = lf_slot(part, text)) {
            slots.insert(*slot);
        }
    }
    return slots;
}

} // namespace

HourSet gf_hours2bitset(std::string_view text) {
    return text.find(':') == std::string_view::npos ? lf_list(text) : lf_range(text);
}
