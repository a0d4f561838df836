// rig/traffic/gzip_text.h
// Whole files of text, gzip-packed or plain. Functions without state: usable from any thread.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace rig {

/// The file's text; unpacked when the file begins as a gzip file does. Throws std::runtime_error, with a text for the
/// user, when it cannot be read, or its packed bytes are cut or damaged.
std::string readText(const std::filesystem::path& path);

/// Packed when the name ends in ".gz". The same text gives the same bytes on every machine. Throws std::runtime_error
/// when it cannot be written.
void writeText(const std::filesystem::path& path, std::string_view text);

/// The lines without their ends, which may be of either kind.
std::vector<std::string_view> linesOf(std::string_view text);

std::string gunzip(std::string_view packed);
std::string gzip(std::string_view text);

} // namespace rig
