// liveries/aircraft_folder.h
// The folder that a scanned file lies in, and what lies beside the file. A value: each task has its own.
#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

/// What the walk saw in a folder, so that most look-ups need no system call. Names as UTF-8.
struct FolderNames {
    std::vector<std::string> folders;
    std::vector<std::string> files;
};

/// A file that the scan reads. Without names every look-up asks the disk.
struct ScannedFile {
    std::filesystem::path path;
    std::string text; ///< of the path, with backslashes
    std::shared_ptr<const FolderNames> names = nullptr;
};

ScannedFile scannedFile(const std::filesystem::path& path);

/// Whether such a folder or regular file lies beside the scanned file. As Windows does, without blanks and dots at the
/// end of the name: "model." is the folder "model".
bool hasFolderBeside(const ScannedFile& file, std::string_view name);
bool hasFileBeside(const ScannedFile& file, std::string_view name);
