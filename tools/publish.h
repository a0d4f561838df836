// tools/publish.h
// Lays out the download server's folder.
#pragma once

#include <filesystem>

#include "core/program_version.h"
#include "distribution/sealed_file.h"

/// From a folder with dbase.xml, airports.xml and AIG-regcodes.xml, as far as they are there, and folders "archive"
/// (airport files), "release" (installers) and "docs", makes what the program asks its server for: the data files
/// sealed, and the version file with this version for all data that the server has. The folder is made aside, with what
/// is published already and not made anew, and takes the live one's place by two renamings: whenever it is interrupted
/// the server has the former set, or the new one, or between the renamings none. The next call mends that. Throws
/// std::runtime_error or std::filesystem::filesystem_error, and leaves the published folder as it was.
void publishDownloads(const std::filesystem::path& source, const ProgramVersion& version,
                      const std::filesystem::path& target, const DataKey& key);
