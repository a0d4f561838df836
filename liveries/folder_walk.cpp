// liveries/folder_walk.cpp
#include "liveries/folder_walk.h"

#include <cstddef>
#include <memory>
#include <string>
#include <system_error>
#include <utility>

#include "core/text_parts.h"
#include "liveries/ascii_text.h"
#include "platform/files.h"

namespace fs = std::filesystem;

namespace {

constexpr std::size_t longestPath = 250; // characters; a path text of this length is not gone into

bool contains(std::string_view text, std::string_view part) {
    return text.find(part) != std::string_view::npos;
}

using PathView = std::basic_string_view<fs::path::value_type>;

fs::path::string_type pathInside(const FolderToScan& folder, const fs::path::string_type& name) {
    fs::path::string_type path = folder.path;
    if (path.back() != '/' && path.back() != fs::path::preferred_separator) {
        path += fs::path::preferred_separator;
    }
    return path += name;
}

/// What lies in a folder: where to go on, which files are wanted, and the names of all.
struct Listing {
    FolderContents contents;
    FolderNames names;
};

void addEntry(const FolderToScan& folder, const platform::FolderEntry& entry, Listing& listing) {
    using Kind = platform::FolderEntry::Kind;
    std::string name = platform::utf8FromNative(entry.name);
    std::string text = folder.text + (folder.text.ends_with('\\') ? "" : "\\") + name;
    // The standard's recursive walk does not follow links to folders either, where it knows them.
    if (entry.kind == Kind::folder && isFolderToScan(text)) {
        listing.contents.folders.push_back({pathInside(folder, entry.name), std::move(text), folder.rootLength});
    } else if (entry.kind == Kind::file && isCfgFileName(name)) {
        listing.contents.cfgFiles.push_back({pathInside(folder, entry.name), std::move(text)});
    }
    (entry.kind == Kind::file ? listing.names.files : listing.names.folders).push_back(std::move(name));
}

std::size_t lastSeparator(PathView path) {
    constexpr fs::path::value_type separators[] = {'/', fs::path::preferred_separator, 0};
    return path.find_last_of(separators);
}

PathView nameOf(PathView path) {
    return path.substr(lastSeparator(path) + 1);
}

/// Empty behind the outermost one.
PathView folderRound(PathView path) {
    const std::size_t separator = lastSeparator(path);
    return path.substr(0, separator == PathView::npos ? 0 : separator);
}

/// Some machines show a link as a folder. Round such a loop the names repeat, so that few folders need a closer look.
bool leadsBack(const FolderToScan& folder) {
    const PathView path = folder.path;
    for (PathView round = folderRound(path); round.size() >= folder.rootLength; round = folderRound(round)) {
        std::error_code ignored;
        if (nameOf(round) == nameOf(path) && fs::equivalent(fs::path(round), fs::path(path), ignored)) {
            return true;
        }
    }
    return false;
}

} // namespace

bool isCfgFileName(std::string_view name) {
    const std::string upper = asciiUpper(name);
    return upper == "AIRCRAFT.CFG" || upper == "SIM.CFG";
}

bool isFolderToScan(std::string_view path) {
    return !contains(path, "airport") && utf8Length(path) < longestPath;
}

bool isIvaoPath(std::string_view path) {
    return contains(path, "ivao_x-csl") || contains(path, "IVAO_MTL");
}

FolderToScan rootToScan(const fs::path& folder) {
    const fs::directory_iterator opened(folder); // throws, where the folders inside are skipped
    const bool hasEnd = !folder.has_filename() && folder.has_relative_path(); // a separator
    const fs::path root = hasEnd ? folder.parent_path() : folder;
    return {root.native(), platform::backslashText(root), root.native().size()};
}

FolderContents contentsOf(const FolderToScan& folder) {
    if (leadsBack(folder)) {
        return {};
    }
    Listing listing;
    platform::listFolder(folder.path, [&](const platform::FolderEntry& entry) { addEntry(folder, entry, listing); });
    if (!listing.contents.cfgFiles.empty()) {
        const auto names = std::make_shared<const FolderNames>(std::move(listing.names));
        for (ScannedFile& file : listing.contents.cfgFiles) {
            file.names = names;
        }
    }
    return std::move(listing.contents);
}
