// sim/transport/ini_text.h
// Reading a value from the lines of an INI file. Without state: usable from any thread.
#pragma once

#include <string>
#include <string_view>
#include <vector>

/// The value of a key in a section, both without case; the first one counts. Blanks round it, and a pair of quotation marks
/// round all of it, are no part of it. Empty when there is none. A line that begins with a semicolon is a comment.
std::string_view iniValue(const std::vector<std::string>& lines, std::string_view section, std::string_view key);

/// Without regard to the case of ASCII letters.
bool equalsWithoutCase(std::string_view one, std::string_view other);
