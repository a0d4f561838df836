// liveries/aircraft_folder.cpp
#include "liveries/aircraft_folder.h"

#include <algorithm>
#include <system_error>

#include "platform/files.h"

namespace fs = std::filesystem;

namespace {

std::string_view asWindowsReads(std::string_view name) {
    const std::size_t last = name.find_last_not_of(". ");
    return name.substr(0, last == std::string_view::npos ? 0 : last + 1);
}

fs::path pathBeside(const ScannedFile& file, std::string_view name) {
    std::string text(name);
    std::replace(text.begin(), text.end(), '\\', '/');
    // Not joined as paths: a name that begins at a root would take the folder's place.
    fs::path path = file.path.parent_path() / "";
    if (path.empty()) {
        path = "./";
    }
    path += platform::pathFromUtf8(text);
    return path;
}

bool contains(const std::vector<std::string>& names, std::string_view name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

} // namespace

ScannedFile scannedFile(const fs::path& path) {
    return {path, platform::backslashText(path)};
}

bool hasFolderBeside(const ScannedFile& file, std::string_view name) {
    name = asWindowsReads(name);
    if (file.names && contains(file.names->folders, name)) {
        return true;
    }
    std::error_code ignored;
    return fs::is_directory(pathBeside(file, name), ignored);
}

bool hasFileBeside(const ScannedFile& file, std::string_view name) {
    name = asWindowsReads(name);
    if (file.names && contains(file.names->files, name)) {
        return true;
    }
    std::error_code ignored;
    return fs::is_regular_file(pathBeside(file, name), ignored);
}
