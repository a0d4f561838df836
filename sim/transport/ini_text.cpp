// sim/transport/ini_text.cpp
#include "sim/transport/ini_text.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <system_error>

namespace {

constexpr std::string_view blanks = " \t\r\v\f";

char lowerCase(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

std::string_view trimmed(std::string_view text) {
    const std::size_t begin = text.find_first_not_of(blanks);
    if (begin == std::string_view::npos) {
        return {};
    }
    return text.substr(begin, text.find_last_not_of(blanks) - begin + 1);
}

std::string_view withoutQuotes(std::string_view text) {
    const bool quoted =
        text.size() >= 2 && (text.front() == '"' || text.front() == '\'') && text.back() == text.front();
    return quoted ? text.substr(1, text.size() - 2) : text;
}

bool isSectionLine(std::string_view line) {
    return line.starts_with('[');
}

std::string_view sectionName(std::string_view line) {
    return trimmed(line.substr(1, line.find(']') - 1));
}

} // namespace

int leadingNumber(std::string_view value) {
    const bool plus = value.starts_with('+');
    const bool negative = value.starts_with('-');
    value.remove_prefix(plus ? 1 : 0);
    if (plus && value.starts_with('-')) {
        return 0;
    }
    int number = 0;
    if (std::from_chars(value.data(), value.data() + value.size(), number).ec == std::errc::result_out_of_range) {
        return negative ? std::numeric_limits<int>::min() : std::numeric_limits<int>::max();
    }
    return number;
}

bool equalsWithoutCase(std::string_view one, std::string_view other) {
    return std::equal(one.begin(), one.end(), other.begin(), other.end(),
                      [](char a, char b) { return lowerCase(a) == lowerCase(b); });
}

std::string_view iniValue(const std::vector<std::string>& lines, std::string_view section, std::string_view key) {
    bool inside = false;
    for (const std::string& text : lines) {
        const std::string_view line = trimmed(text);
        if (isSectionLine(line)) {
            if (inside) {
                break;
            }
            inside = equalsWithoutCase(sectionName(line), section);
            continue;
        }
        const std::size_t equals = line.find('=');
        if (!inside || line.starts_with(';') || equals == std::string_view::npos) {
            continue;
        }
        if (equalsWithoutCase(trimmed(line.substr(0, equals)), key)) {
            return withoutQuotes(trimmed(line.substr(equals + 1)));
        }
    }
    return {};
}
