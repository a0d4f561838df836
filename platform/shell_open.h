// platform/shell_open.h
// Opening a file or folder for the user in whatever program the system has for it.
#pragma once

#include <filesystem>

namespace platform {

/// Answers whether the system took the request.
bool openForUser(const std::filesystem::path& path);

} // namespace platform
