// tools/publish.h
// Lays out the download server's folder.
#pragma once

#include <filesystem>

#include "core/program_version.h"
#include "distribution/sealed_file.h"

/// From a folder with dbase.xml, airports.xml and AIG-regcodes.xml, as far as they are there, and folders "archive" (airport
/// files), "release" (installers) and "docs", makes what the program asks its server for: the data files sealed, and the
/// version file with this version for all data that the server has. Everything is made aside first and moved in when it is
/// whole, the version file last: a failure before that leaves the published folder as it was, and no client sees a version
/// before its files. Throws std::runtime_error or std::filesystem::filesystem_error.
void publishDownloads(const std::filesystem::path& source, const ProgramVersion& version,
                      const std::filesystem::path& target, const DataKey& key);
