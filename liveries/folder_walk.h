// liveries/folder_walk.h
// Which files of a folder a scan reads, and which folders inside it. The tasks of the scan, at the same time.
#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "liveries/aircraft_folder.h"

/// Whether the name is that of an aircraft.cfg or sim.cfg file, in any case of the letters.
bool isCfgFileName(std::string_view name);
/// Whether a folder of this path, written with backslashes, is gone into.
bool isFolderToScan(std::string_view path);
/// Whether a file of this path, written with backslashes, has the form of the IVAO liveries.
bool isIvaoPath(std::string_view path);

/// A folder that a scan is still to look into.
struct FolderToScan {
    std::filesystem::path::string_type path;
    std::string text; ///< of the path, with backslashes
    /// Of the path of the folder that the scan began in.
    std::size_t rootLength = 0;
};

/// What a scan wants of a folder.
struct FolderContents {
    std::vector<FolderToScan> folders;
    std::vector<ScannedFile> cfgFiles;
};

/// The folder that a scan begins in. Throws std::filesystem::filesystem_error when it cannot be opened.
FolderToScan rootToScan(const std::filesystem::path& folder);

/// As far as the folder can be read; nothing of a link that leads back to a folder round it. Any thread.
FolderContents contentsOf(const FolderToScan& folder);
