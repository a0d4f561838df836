// tools/files.h
// Files of the maintainer: read whole, plain or gzipped, and written whole or not at all.
#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <string_view>

#include "distribution/sealed_file.h"

/// The content of a file, unzipped when it is gzipped. Throws std::runtime_error with the path when it cannot be read.
std::string wholeFile(const std::filesystem::path& path);

/// Lets `write` make a file beside `path`, which then takes its place; nothing changes when `write` throws.
void writeWhole(const std::filesystem::path& path, const std::function<void(const std::filesystem::path&)>& write);
void writeText(const std::filesystem::path& path, std::string_view text);

/// The key that a file holds, 32 characters or 64 hexadecimal digits, with line ends behind it left out; the key of
/// this build when `path` is empty. Throws std::runtime_error when the file holds no key.
DataKey keyOfFile(const std::filesystem::path& path);
