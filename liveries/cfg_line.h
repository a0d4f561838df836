// liveries/cfg_line.h
// What one line of an aircraft.cfg file says. Each function answers as the ECMAScript expression beside it does on the
// whole line, but in one pass without recursion, so that a line may have any length. Without state: usable from any
// thread.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

/// The keys that the scan reads, case-sensitive.
enum class CfgKey : std::uint8_t {
    title,
    sim,
    model,
    texture,
    atc_model,
    atc_id,
    atc_parking_types,
    atc_parking_codes,
};

/// A line `\s*(key)\s*=\s*(.*\S)\s*`.
struct CfgEntry {
    CfgKey key;
    std::string_view value; ///< group 2: never empty, no white space round it
};

/// The part of a line that counts: the file of the scan cannot hold a zero, so that two titles would become one behind
/// the back of the reports.
std::string_view untilZero(std::string_view line);

/// Nothing when the line matches the expression of no key; no line matches those of two.
std::optional<CfgEntry> cfgEntry(std::string_view line);

/// The digits of a section header `\s*(\[fltsim\.)(\d+)\]\s*`.
std::optional<std::string_view> fltsimDigits(std::string_view line);

/// Whether the beginning of a section header, in lower or in upper case, stands anywhere in the line.
bool mentionsFltsim(std::string_view line);

/// The airline in a title `TYPE\s*(\w\w\w).*$`, TYPE being the type code.
std::optional<std::string_view> airlineBehindType(std::string_view title, std::string_view type);

/// The folder's code in a path `.+\\IVAO_MTL\\IVAO_(\w+)\\aircraft.cfg$`.
std::optional<std::string_view> ivaoFolderCode(std::string_view path);
