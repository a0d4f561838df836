// platform/windows/files.cpp
#include "platform/files.h"

// clang-format off
#include <windows.h>
#include <initguid.h>
#include <knownfolders.h>
#include <shlobj.h>
// clang-format on

#include <optional>
#include <string_view>

#include "platform/system_folders.h"

namespace platform {

namespace {

/// A handle of the system's, which `Close` closes.
template <typename Close>
class Handle {
public:
    explicit Handle(HANDLE handle) : handle_(handle) {}
    ~Handle() {
        if (valid()) {
            Close()(handle_);
        }
    }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;

    bool valid() const { return handle_ != INVALID_HANDLE_VALUE; }
    HANDLE get() const { return handle_; }

private:
    HANDLE handle_;
};

struct CloseFile {
    void operator()(HANDLE file) const { CloseHandle(file); }
};
struct CloseSearch {
    void operator()(HANDLE search) const { FindClose(search); }
};
using FileHandle = Handle<CloseFile>;
using SearchHandle = Handle<CloseSearch>;

/// What lies in a folder may be elsewhere in truth without being a link, a file that is fetched when it is read for
/// instance.
bool mayBeLink(const WIN32_FIND_DATAW& found) {
    const DWORD tag = found.dwReserved0; // a machine that tells none has nothing but links
    return tag == 0 || IsReparseTagNameSurrogate(tag);
}

/// Whoever went round such a link would never come to an end.
bool leadsRound(const std::filesystem::path& folder, const std::filesystem::path& link) {
    std::error_code ignored;
    std::filesystem::path round = absolute(folder, ignored);
    while (!equivalent(round, link, ignored)) {
        if (!round.has_relative_path()) {
            return false;
        }
        round = round.parent_path();
    }
    return true;
}

/// Nothing for a link that leads to neither.
std::optional<FolderEntry::Kind> kindOf(const std::wstring& folder, const WIN32_FIND_DATAW& found) {
    using Kind = FolderEntry::Kind;
    const Kind kind = (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0 ? Kind::folder : Kind::file;
    if ((found.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0) {
        return kind;
    }
    const std::filesystem::path path = std::filesystem::path(folder) / found.cFileName;
    std::error_code ignored;
    const auto status = std::filesystem::status(path, ignored);
    if (!is_directory(status)) {
        return is_regular_file(status) ? std::optional(Kind::file) : std::nullopt;
    }
    return kind == Kind::folder && mayBeLink(found) && leadsRound(folder, path) ? Kind::linkedFolder : kind;
}

bool isDots(std::wstring_view name) {
    return name == L"." || name == L"..";
}

std::error_code lastError() {
    return {static_cast<int>(GetLastError()), std::system_category()};
}

std::filesystem::path knownFolder(const KNOWNFOLDERID& id) {
    PWSTR text = nullptr;
    std::filesystem::path folder;
    if (SUCCEEDED(SHGetKnownFolderPath(id, 0, nullptr, &text))) {
        folder = text;
    }
    CoTaskMemFree(text);
    return folder;
}

std::error_code syncToDisk(const std::filesystem::path& path) {
    const FileHandle file(CreateFileW(path.c_str(), GENERIC_WRITE,
                                      FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                                      FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file.valid() || !FlushFileBuffers(file.get())) {
        return lastError();
    }
    return {};
}

} // namespace

std::filesystem::path systemRoamingFolder() {
    return knownFolder(FOLDERID_RoamingAppData);
}

std::filesystem::path systemPublicDocumentsFolder() {
    return knownFolder(FOLDERID_PublicDocuments);
}

std::filesystem::path systemDocumentsFolder() {
    return knownFolder(FOLDERID_Documents);
}

std::vector<std::filesystem::path> programFilesFolders() {
    std::vector<std::filesystem::path> folders;
    for (const KNOWNFOLDERID& id : {FOLDERID_ProgramFiles, FOLDERID_ProgramFilesX86}) {
        if (std::filesystem::path folder = knownFolder(id); !folder.empty()) {
            folders.push_back(std::move(folder));
        }
    }
    return folders;
}

// A link to a folder counts as a folder, for much lies behind links of the whole machine's (junctions).
void listFolder(const std::wstring& folder, const std::function<void(FolderEntry)>& visit) {
    WIN32_FIND_DATAW found{};
    const bool isSeparated = folder.ends_with(L'\\') || folder.ends_with(L'/');
    const std::wstring pattern = folder + (isSeparated ? L"*" : L"\\*");
    const SearchHandle search(FindFirstFileExW(pattern.c_str(), FindExInfoBasic, &found, FindExSearchNameMatch, nullptr,
                                               FIND_FIRST_EX_LARGE_FETCH));
    for (bool isThere = search.valid(); isThere; isThere = FindNextFileW(search.get(), &found) != 0) {
        if (isDots(found.cFileName)) {
            continue;
        }
        if (const auto kind = kindOf(folder, found)) {
            visit({found.cFileName, *kind});
        }
    }
}

std::error_code replaceFile(const std::filesystem::path& from, const std::filesystem::path& to) {
    if (const std::error_code error = syncToDisk(from)) {
        return error;
    }
    // A virus scanner or an indexer may hold a file that was just written, but only for a moment.
    constexpr int tries = 20;
    constexpr DWORD pauseMs = 10;
    for (int i = 1; !MoveFileExW(from.c_str(), to.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH); ++i) {
        const std::error_code error = lastError();
        const bool mayPass = error.value() == ERROR_ACCESS_DENIED || error.value() == ERROR_SHARING_VIOLATION;
        if (!mayPass || i == tries) {
            return error;
        }
        Sleep(pauseMs);
    }
    return {};
}

bool writeVanishingFile(const std::filesystem::path& file) {
    const FileHandle created(CreateFileW(file.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                         FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE, nullptr));
    if (!created.valid()) {
        return false;
    }
    DWORD written = 0;
    return WriteFile(created.get(), "w", 1, &written, nullptr) && written == 1;
}

} // namespace platform
