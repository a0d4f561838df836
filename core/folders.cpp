// core/folders.cpp
#include "core/folders.h"

#include <algorithm>
#include <string>
#include <system_error>

#include <fmt/format.h>

#include "core/log.h"
#include "core/parameter_file.h"
#include "platform/files.h"
#include "platform/shell_open.h"
#include "platform/text_encoding.h"
#include "platform/window_system.h"

namespace fs = std::filesystem;

namespace {

std::string upperCase(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; });
    return text;
}

void check(const char* operation, const fs::path& path, std::error_code error) {
    if (error) {
        throw fs::filesystem_error(operation, path, error);
    }
}

std::error_code otherThanNotFound(std::error_code error) {
    const bool notFound = error == std::errc::no_such_file_or_directory || error == std::errc::not_a_directory;
    return notFound ? std::error_code{} : error;
}

bool lf_isAnyFile(const fs::path& /*path*/) {
    return true;
}

bool lf_isXmlFile(const fs::path& path) {
    return upperCase(platform::utf8FromPath(path.extension())) == ".XML";
}

void lf_removeFiles(const char* routine, const fs::path& folder, bool (*isWanted)(const fs::path&)) {
    try {
        if (!fileExists(folder)) {
            return;
        }
        for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
            // An entry that cannot be looked at is no file of ours, and the others go all the same.
            std::error_code error;
            if (!entry.is_regular_file(error) || !isWanted(entry.path())) {
                continue;
            }
            removeFileOrLog(entry.path());
        }
    } catch (const std::exception& error) {
        logError(fmt::format("{} exception: {}", routine, platform::readableText(error.what())));
    }
}

/// For comparing folders as Windows does: without regard to case, and ending in a backslash.
std::string comparableText(const fs::path& folder) {
    std::error_code ignored;
    std::string text = upperCase(platform::backslashText(fs::absolute(folder, ignored).lexically_normal()));
    return text.ends_with('\\') ? text : text + '\\';
}

bool liesInProgramFiles(const fs::path& folder) {
    const std::vector<fs::path> protectedFolders = platform::programFilesFolders();
    return std::any_of(protectedFolders.begin(), protectedFolders.end(), [&](const fs::path& outer) {
        return comparableText(folder).starts_with(comparableText(outer));
    });
}

void lf_open(const fs::path& path, std::string_view refusal) {
    if (!platform::openForUser(path)) {
        window_system::showMessageBox(refusal);
    }
}

} // namespace

void gf_removeFilesFromDirectory(const fs::path& path) {
    lf_removeFiles("gf_removeFilesFromDirectory", path, lf_isAnyFile);
}

void gf_removeXMLFilesFromDirectory(const fs::path& path) {
    lf_removeFiles("gf_removeXMLFilesFromDirectory", path, lf_isXmlFile);
}

bool isWritableFolder(const fs::path& path) {
    return !liesInProgramFiles(path) && platform::writeVanishingFile(path / ".write_test.tmp");
}

void gf_openParameterFolder() {
    lf_open(gf_parameterFolder(), "Could not open folder with parameters.xml");
}

void gf_openManual() {
    std::error_code ignored;
    lf_open(fs::absolute("docs", ignored) / "Manual.pdf", "Could not open local folder with Manual");
}

fs::file_status fileStatus(const fs::path& path) {
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    check("status", path, otherThanNotFound(error));
    return status;
}

bool fileExists(const fs::path& path) {
    std::error_code error;
    const bool exists = fs::exists(path, error);
    check("exists", path, otherThanNotFound(error));
    return exists;
}

bool removeFile(const fs::path& path) {
    std::error_code error;
    const bool removed = fs::remove(path, error);
    check("remove", path, otherThanNotFound(error));
    return removed;
}

void removeFileOrLog(const fs::path& path) {
    std::error_code error;
    if (fs::remove(path, error); otherThanNotFound(error)) {
        logError(fmt::format("Failed to remove {} ({})", platform::backslashText(path),
                             platform::readableText(error.message())));
    }
}

void createFolders(const fs::path& path) {
    std::error_code error;
    fs::create_directories(path, error);
    check("create_directories", path, error);
}
