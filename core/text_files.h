// core/text_files.h
// Reading whole text files, of whatever charset, into lines of UTF-8. Without state: usable from any thread.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

/// How the characters of a text file are written.
enum class Charset {
    ANSI = 0, ///< the system's code page
    Unicode = 1,
    Unicode_big_endian = 2,
    UTF8_with_BOM = 3,
    UTF8_without_BOM = 4,
    none_found = 5, ///< not a text
};

/// A mark at the begin decides. Without one: no bytes, or a zero byte among them, is no text; valid UTF-8 throughout is
/// UTF-8; all else is ANSI.
Charset charsetOf(std::string_view bytes);

/// The same for the bytes of a file; none_found when it cannot be read.
Charset charsetOfFile(const std::filesystem::path& path);

/// The lines of a text. A line has neither its line end (LF, and every CR right before it) nor the mark; the last one
/// needs no line end, but loses its CRs too. Valid UTF-8 whatever the bytes are: what stands for no character becomes
/// U+FFFD. Unicode of an odd size has no lines.
std::vector<std::string> linesOf(Charset charset, std::string_view bytes);

/// Reads a whole file into `lines`, in place of what they held, using the room that they have. The answer is empty on
/// success; "open_failed", without a word in the log; or the text of the error line in the log when the charset is none
/// or reading fails. No exceptions.
std::string readLines(Charset charset, const std::filesystem::path& path, std::vector<std::string>& lines);
