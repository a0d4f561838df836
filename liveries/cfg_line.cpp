// liveries/cfg_line.cpp
#include "liveries/cfg_line.h"

#include <algorithm>
#include <array>

namespace {

constexpr std::string_view blanks = " \t\n\v\f\r"; // the expression's \s
constexpr std::string_view lineEnds = "\n\r";      // what its . does not match
constexpr std::size_t airlineLength = 3;

struct KeyName {
    std::string_view name;
    CfgKey key;
};

constexpr std::array<KeyName, 8> keyNames{{
    {"title", CfgKey::title},
    {"sim", CfgKey::sim},
    {"model", CfgKey::model},
    {"texture", CfgKey::texture},
    {"atc_model", CfgKey::atc_model},
    {"atc_id", CfgKey::atc_id},
    {"atc_parking_types", CfgKey::atc_parking_types},
    {"atc_parking_codes", CfgKey::atc_parking_codes},
}};

constexpr bool isBlank(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

constexpr bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

constexpr bool isWordCharacter(char c) {
    return isDigit(c) || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
}

void skipBlanks(std::string_view& text) {
    std::size_t count = 0;
    while (count < text.size() && isBlank(text[count])) {
        ++count;
    }
    text.remove_prefix(count);
}

bool skip(std::string_view& text, std::string_view prefix) {
    if (!text.starts_with(prefix)) {
        return false;
    }
    text.remove_prefix(prefix.size());
    return true;
}

bool isAllBlank(std::string_view text) {
    return std::all_of(text.begin(), text.end(), isBlank);
}

bool hasLineEnd(std::string_view text) {
    return text.find_first_of(lineEnds) != std::string_view::npos;
}

/// Looks first at what stands behind the key: few lines need a closer look.
bool beginsWithKey(std::string_view line, std::string_view key) {
    return line.size() > key.size() && (line[key.size()] == '=' || isBlank(line[key.size()])) && line.starts_with(key);
}

/// What is left from the equals sign on must be a value; empty when it is none.
std::string_view valueBehindKey(std::string_view rest) {
    skipBlanks(rest);
    if (!skip(rest, "=")) {
        return {};
    }
    skipBlanks(rest);
    const std::size_t last = rest.find_last_not_of(blanks);
    const std::string_view value = rest.substr(0, last == std::string_view::npos ? 0 : last + 1);
    return hasLineEnd(value) ? std::string_view{} : value;
}

bool isWord(std::string_view text) {
    return !text.empty() && std::all_of(text.begin(), text.end(), isWordCharacter);
}

/// The last part of a path, which is taken off it with its backslash.
std::string_view takeLastPart(std::string_view& path) {
    const std::size_t at = path.rfind('\\');
    if (at == std::string_view::npos) {
        return {};
    }
    const std::string_view part = path.substr(at + 1);
    path = path.substr(0, at);
    return part;
}

bool isAircraftCfg(std::string_view name) {
    constexpr std::string_view begin = "aircraft";
    constexpr std::string_view end = "cfg";
    return name.size() == begin.size() + 1 + end.size() && name.starts_with(begin) && name.ends_with(end) &&
           !hasLineEnd(name);
}

} // namespace

std::string_view untilZero(std::string_view line) {
    return line.substr(0, line.find('\0'));
}

std::optional<CfgEntry> cfgEntry(std::string_view line) {
    skipBlanks(line);
    for (const KeyName& candidate : keyNames) {
        if (beginsWithKey(line, candidate.name)) {
            const std::string_view value = valueBehindKey(line.substr(candidate.name.size()));
            return value.empty() ? std::nullopt : std::optional(CfgEntry{candidate.key, value});
        }
    }
    return std::nullopt;
}

std::optional<std::string_view> fltsimDigits(std::string_view line) {
    skipBlanks(line);
    if (!skip(line, "[fltsim.")) {
        return std::nullopt;
    }
    const auto end = std::find_if_not(line.begin(), line.end(), isDigit);
    const std::string_view digits = line.substr(0, static_cast<std::size_t>(end - line.begin()));
    line.remove_prefix(digits.size());
    if (digits.empty() || !skip(line, "]") || !isAllBlank(line)) {
        return std::nullopt;
    }
    return digits;
}

bool mentionsFltsim(std::string_view line) {
    return line.find("[fltsim.") != std::string_view::npos || line.find("[FLTSIM.") != std::string_view::npos;
}

std::optional<std::string_view> airlineBehindType(std::string_view title, std::string_view type) {
    if (!skip(title, type)) {
        return std::nullopt;
    }
    skipBlanks(title);
    const std::string_view airline = title.substr(0, airlineLength);
    if (airline.size() != airlineLength || !isWord(airline) || hasLineEnd(title)) {
        return std::nullopt;
    }
    return airline;
}

std::optional<std::string_view> ivaoFolderCode(std::string_view path) {
    constexpr std::string_view prefix = "IVAO_";
    if (!isAircraftCfg(takeLastPart(path))) {
        return std::nullopt;
    }
    std::string_view code = takeLastPart(path);
    if (!skip(code, prefix) || !isWord(code)) {
        return std::nullopt;
    }
    const bool inFolder = takeLastPart(path) == "IVAO_MTL" && !path.empty() && !hasLineEnd(path);
    return inFolder ? std::optional(code) : std::nullopt;
}
