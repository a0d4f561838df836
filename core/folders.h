// core/folders.h
// Folders and files on disk: clearing, the write test, checked file-system calls, and opening things for the user.
// Without state: usable from any thread, but for the opening, which may show a message box and is the window thread's.
#pragma once

#include <filesystem>

/// Deletes every file that lies directly in the folder; a folder that does not exist is left alone. A file that cannot
/// be deleted is one error line and the others go; no exceptions.
void gf_removeFilesFromDirectory(const std::filesystem::path& path);

/// The same for the files with the extension ".xml", in whatever case.
void gf_removeXMLFilesFromDirectory(const std::filesystem::path& path);

/// One that cannot be removed is an error line. No exceptions.
void removeFileOrLog(const std::filesystem::path& path);

/// Whether an ordinary user can create files in the folder. The machine's program-files folders, and what lies in them,
/// count as not writable even where this process may write.
bool isWritableFolder(const std::filesystem::path& path);

/// Shows the folder with parameters.xml, or the local manual; a message box when the system refuses.
void gf_openParameterFolder();
void gf_openManual();

// The file-system calls for code that goes by exceptions: a failure throws std::filesystem::filesystem_error with the
// name of the operation ("status", "exists", "remove", "create_directories"). "Not found" is an answer to the first
// three.

std::filesystem::file_status fileStatus(const std::filesystem::path& path);
bool fileExists(const std::filesystem::path& path);
/// True when there was something to remove.
bool removeFile(const std::filesystem::path& path);
/// The folder and those above it, as far as they are missing.
void createFolders(const std::filesystem::path& path);
