// core/text_parts.h
// Pieces of a text, as views into it. Without state: usable from any thread.
#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

/// Without blanks, tabs and line ends at both ends.
std::string_view trimmed(std::string_view text);

/// What stands between the separators, empty parts too; one empty part for an empty text.
std::vector<std::string_view> partsOf(std::string_view text, char separator);

/// The characters of valid UTF-8, which may be fewer than its bytes.
std::size_t utf8Length(std::string_view text);
