// distribution/download.h
// Files from the download server. A transfer goes to a file beside its target and replaces it only when it is whole;
// the run's stop flags abort it. Each call blocks and belongs to the run thread.
#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

/// A libcurl handle; empty when the library gives none.
using DownloadHandle = std::unique_ptr<void, void (*)(void*)>;
DownloadHandle gf_newDownloadHandle();

/// The URL of a path that is relative to the download server's root.
std::string gf_downloadUrl(std::string_view path);

/// Another server in the place of this build's, for tests; an empty root takes that back. Ends with a slash.
void setDownloadRoot(std::string_view root);

enum class DownloadMode { text, binary };

/// Fetches the URL, http or https, into the file. False, with a log line and the former file as it was, when anything
/// fails; so does an empty handle, without a word.
bool lf_downloadTo(void* handle, const std::string& url, const std::filesystem::path& path, DownloadMode mode);

/// Fetches a data file of this program's major version. False, with a log line and the former file as it was, when the
/// transfer fails or what came is not a whole container under this build's key.
bool lf_downloadDataFile(std::string_view fileName, const std::filesystem::path& path);
