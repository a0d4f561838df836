// platform/system_folders.h
// The system's own answer for a known folder, behind platform/files.h. Usable from any thread.
#pragma once

#include <filesystem>

namespace platform {

std::filesystem::path systemRoamingFolder();
std::filesystem::path systemPublicDocumentsFolder();
std::filesystem::path systemDocumentsFolder();

} // namespace platform
