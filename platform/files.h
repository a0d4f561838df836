// platform/files.h
// Paths as UTF-8 text, known folders, and the file operations that the standard library does not offer.
// Usable from any thread.
#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

namespace platform {

/// Text that is not valid UTF-8 throws std::runtime_error where paths are wide.
std::filesystem::path pathFromUtf8(std::string_view text);
/// Always valid UTF-8; a file name that cannot be written so shows U+FFFD in its place.
std::string utf8FromPath(const std::filesystem::path& path);
/// The same of the machine's own path text.
std::string utf8FromNative(const std::filesystem::path::string_type& text);

/// The text of a path with backslashes on every machine, for rules that look at path text.
std::string backslashText(const std::filesystem::path& path);

/// The user's roaming application-data folder; natively $XDG_CONFIG_HOME, or .config in the home folder.
std::filesystem::path roamingAppDataFolder();

/// Puts another folder in its place, for tests; an empty path takes it back.
void setRoamingAppDataFolder(const std::filesystem::path& folder);

/// The documents folders that all users share and that the user owns; natively Public/Documents and Documents in the
/// home folder.
std::filesystem::path publicDocumentsFolder();
std::filesystem::path documentsFolder();

/// Puts the folders "public" and "own" of another folder in their place, for tests; an empty path takes it back.
void setDocumentsFolders(const std::filesystem::path& folder);

/// The machine's program-files folders, which an ordinary user cannot write to.
std::vector<std::filesystem::path> programFilesFolders();

/// Moves `from` over `to` in one step, after its bytes have reached the disk: whoever looks finds the old file or the
/// new one, whole, even after a power cut.
std::error_code replaceFile(const std::filesystem::path& from, const std::filesystem::path& to);

/// What lies in a folder. A link is what it leads to. A linked folder is one that a walk is not to go into: natively
/// any that a link leads to, on Windows one that lies round the link.
struct FolderEntry {
    enum class Kind : unsigned char { file, folder, linkedFolder };

    std::filesystem::path::string_type name; ///< as the machine writes it
    Kind kind = Kind::file;
};

/// Calls `visit` with each file and folder inside, in the machine's order, as far as the folder can be read; with
/// nothing else that may lie there. Faster than the standard's iterator, which makes a path of each entry.
void listFolder(const std::filesystem::path::string_type& folder, const std::function<void(FolderEntry)>& visit);

/// Creates `file` so that it vanishes when closed, writes one byte and closes it. True when all of that succeeded.
bool writeVanishingFile(const std::filesystem::path& file);

} // namespace platform
