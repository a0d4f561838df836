// distribution/sealed_file.h
// The container that the reference data travel in: a stream of authenticated chunks, with nothing else around them.
// Without state: usable from any thread.
#pragma once

#include <array>
#include <filesystem>
#include <optional>
#include <string_view>

using DataKey = std::array<unsigned char, 32>;

/// The key of this build's data files.
const DataKey& gf_dataKey();

/// A key written as 64 hexadecimal digits, or as 32 characters that are the key themselves; nothing for any other
/// length.
std::optional<DataKey> parseDataKey(std::string_view text);

/// Opens a container with this build's key. A failure is a log line, and false; the output may hold a part then.
bool gf_streamDecrypt(const std::filesystem::path& input, const std::filesystem::path& output);

/// Opens a container. Throws std::runtime_error "Could not open input file: " or "Could not open output file: " with
/// the path, "Invalid header or key", or "Decryption failed". A stream that just ends is whole, and what follows the
/// last chunk is not looked at.
void lf_streamDecryptFile(const std::filesystem::path& input, const std::filesystem::path& output, const DataKey& key);

/// Makes a container, whose last chunk says that it is the last. Throws as lf_streamDecryptFile does for its two files.
void lf_streamSealFile(const std::filesystem::path& input, const std::filesystem::path& output, const DataKey& key);

/// Whether each chunk opens, and the last one says that it is the last: so much is asked of a download.
bool gf_isWholeContainer(const std::filesystem::path& path, const DataKey& key);
