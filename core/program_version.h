// core/program_version.h
// Versions of the program and of its data files: three numbers, compared from the left.
// Value type without state: usable from any thread.
#pragma once

#include <compare>
#include <string>
#include <string_view>

struct ProgramVersion {
    int major = 0;
    int minor = 0;
    int patch = 0;

    friend auto operator<=>(const ProgramVersion&, const ProgramVersion&) = default;
};

/// The version of this program.
inline constexpr ProgramVersion thisVersion{11, 10, 8};

/// The text form "{}.{}.{}".
std::string versionText(const ProgramVersion& version);

/// Finds the first "major.minor.patch" of decimal numbers in the text. Throws std::runtime_error "invalid version
/// format" when there is none, "parse error in version string" when a number does not fit an int.
ProgramVersion parseVersion(std::string_view text);
