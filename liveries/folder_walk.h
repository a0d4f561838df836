// liveries/folder_walk.h
// Which files of a folder and the folders inside it a scan reads. Start-up, run thread.
#pragma once

#include <filesystem>
#include <functional>
#include <string_view>

#include "liveries/aircraft_folder.h"

/// Whether the name is that of an aircraft.cfg or sim.cfg file, in any case of the letters.
bool isCfgFileName(std::string_view name);
/// Whether a folder of this path, written with backslashes, is gone into.
bool isFolderToScan(std::string_view path);
/// Whether a file of this path, written with backslashes, has the form of the IVAO liveries.
bool isIvaoPath(std::string_view path);

/// What to do with a file; false ends the walk.
using FileVisit = std::function<bool(ScannedFile)>;
/// Called with each folder before it is read; false ends the walk.
using FolderVisit = std::function<bool(std::string_view path)>;

/// Calls `visit` with each file that a scan reads. A folder inside that cannot be read is skipped; a link that leads
/// back to a folder round it is not followed. False when it was ended. Throws std::filesystem::filesystem_error when
/// the folder itself cannot be opened, and what the visits throw.
bool walkFolder(const std::filesystem::path& folder, const FolderVisit& enter, const FileVisit& visit);
