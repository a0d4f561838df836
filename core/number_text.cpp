// core/number_text.cpp
#include "core/number_text.h"

#include <charconv>
#include <cmath>
#include <system_error>

#include <fmt/format.h>

namespace {

template <typename Number>
std::optional<Number> parseWhole(std::string_view text) {
    Number number{};
    const char* const end = text.data() + text.size();
    const auto [stopped, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc{} || stopped != end) {
        return std::nullopt;
    }
    return number;
}

} // namespace

std::optional<double> parseDouble(std::string_view text) {
    const std::optional<double> number = parseWhole<double>(text);
    // The conversion knows the words for infinity and not-a-number; no field of ours may hold them.
    return number && std::isfinite(*number) ? number : std::nullopt;
}

std::optional<int> parseInt(std::string_view text) {
    return parseWhole<int>(text);
}

std::string formatNumber(double number) {
    return std::trunc(number) == number ? fmt::format("{:.0f}", number) : fmt::format("{:.1f}", number);
}
