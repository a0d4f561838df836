// core/program_version.cpp
#include "core/program_version.h"

#include <array>
#include <charconv>
#include <optional>
#include <stdexcept>

#include <fmt/format.h>

namespace {

constexpr std::string_view digits = "0123456789";

/// The digits of the three parts, when the text begins with them.
std::optional<std::array<std::string_view, 3>> leadingParts(std::string_view text) {
    std::array<std::string_view, 3> parts;
    for (std::size_t i = 0; i < parts.size(); ++i) {
        if (i > 0) {
            if (!text.starts_with('.')) {
                return std::nullopt;
            }
            text.remove_prefix(1);
        }
        parts[i] = text.substr(0, text.find_first_not_of(digits));
        if (parts[i].empty()) {
            return std::nullopt;
        }
        text.remove_prefix(parts[i].size());
    }
    return parts;
}

int partNumber(std::string_view part) {
    int number = 0;
    if (std::from_chars(part.data(), part.data() + part.size(), number).ec != std::errc{}) {
        throw std::runtime_error("parse error in version string");
    }
    return number;
}

} // namespace

std::string versionText(const ProgramVersion& version) {
    return fmt::format("{}.{}.{}", version.major, version.minor, version.patch);
}

ProgramVersion parseVersion(std::string_view text) {
    for (auto start = text.find_first_of(digits); start != std::string_view::npos; start = text.find_first_of(digits)) {
        text.remove_prefix(start);
        if (const auto parts = leadingParts(text)) {
            return {partNumber((*parts)[0]), partNumber((*parts)[1]), partNumber((*parts)[2])};
        }
        text.remove_prefix(text.substr(0, text.find_first_not_of(digits)).size());
    }
    throw std::runtime_error("invalid version format");
}
