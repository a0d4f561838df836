// platform/files.cpp
#include "platform/files.h"

#include <algorithm>
#include <type_traits>

#include "platform/system_folders.h"
#include "platform/text_encoding.h"

namespace platform {

namespace {

// Set by tests, before they start threads.
std::filesystem::path chosenRoamingFolder;
std::filesystem::path chosenDocumentsFolder;

} // namespace

std::filesystem::path roamingAppDataFolder() {
    return chosenRoamingFolder.empty() ? systemRoamingFolder() : chosenRoamingFolder;
}

void setRoamingAppDataFolder(const std::filesystem::path& folder) {
    chosenRoamingFolder = folder;
}

std::filesystem::path publicDocumentsFolder() {
    return chosenDocumentsFolder.empty() ? systemPublicDocumentsFolder() : chosenDocumentsFolder / "public";
}

std::filesystem::path documentsFolder() {
    return chosenDocumentsFolder.empty() ? systemDocumentsFolder() : chosenDocumentsFolder / "own";
}

void setDocumentsFolders(const std::filesystem::path& folder) {
    chosenDocumentsFolder = folder;
}

std::filesystem::path pathFromUtf8(std::string_view text) {
    return std::filesystem::path(std::u8string(text.begin(), text.end()));
}

std::string utf8FromNative(const std::filesystem::path::string_type& text) {
    // The machine's own path text is bytes or 16-bit units, and a name on disk need be neither valid UTF-8 nor UTF-16.
    using Unit = std::conditional_t<sizeof(std::filesystem::path::value_type) == 1, char, char16_t>;
    return repairedUtf8(std::basic_string<Unit>(text.begin(), text.end()));
}

std::string utf8FromPath(const std::filesystem::path& path) {
    return utf8FromNative(path.native());
}

std::string backslashText(const std::filesystem::path& path) {
    std::string text = utf8FromPath(path);
    std::replace(text.begin(), text.end(), '/', '\\');
    return text;
}

} // namespace platform
