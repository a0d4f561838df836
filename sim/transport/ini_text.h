// sim/transport/ini_text.h
// Reading a value from the lines of an INI file. Without state: usable from any thread.
#pragma once

#include <string>
#include <string_view>
#include <vector>

/// The value of a key in a section, both without case; the first one counts, and of sections with the same name only
/// the first is looked at, as the system's own calls do. Blanks round it, and a pair of quotation marks round all of
/// it, are no part of it. Empty when there is none. A line that begins with a semicolon is a comment.
std::string_view iniValue(const std::vector<std::string>& lines, std::string_view section, std::string_view key);

/// The number that a value begins with: a sign, digits; whatever follows them does not count. 0 without a digit; a
/// number that an int cannot hold becomes the nearest one that it can.
int leadingNumber(std::string_view value);

/// Without regard to the case of ASCII letters.
bool equalsWithoutCase(std::string_view one, std::string_view other);
