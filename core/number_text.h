// core/number_text.h
// Numbers from and to text, whatever the user's locale. Without state: usable from any thread.
#pragma once

#include <optional>
#include <string>
#include <string_view>

/// The number that the whole text is, in decimal or exponent form ("-5", "0.25", ".5", "1e3"). Nothing for an empty
/// text, blanks, a plus sign, hexadecimal, "nan", "inf" and what a double cannot hold ("1e999", "1e-999"): the answer
/// is always finite.
std::optional<double> parseDouble(std::string_view text);

/// The whole number in decimal that the whole text is; nothing for anything else and for what an int cannot hold.
std::optional<int> parseInt(std::string_view text);

/// A number without decimals when it is whole, otherwise with one.
std::string formatNumber(double number);
