// liveries/folder_walk.cpp
#include "liveries/folder_walk.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "liveries/ascii_text.h"
#include "platform/files.h"

namespace fs = std::filesystem;

namespace {

constexpr std::ptrdiff_t longestPath = 250; // characters; a path text of this length is not gone into

/// Of UTF-8: every byte but those that continue a character.
std::ptrdiff_t characterCount(std::string_view text) {
    return std::count_if(text.begin(), text.end(), [](char c) { return (c & 0xC0) != 0x80; });
}

bool contains(std::string_view text, std::string_view part) {
    return text.find(part) != std::string_view::npos;
}

/// A folder that the walk is in, or is still to go into.
struct Folder {
    fs::path path;
    std::string text; ///< of the path, with backslashes
};

/// What lies in a folder: where to go on, and which files are wanted.
struct Listing {
    std::vector<Folder> folders;
    std::vector<Folder> cfgFiles;
    std::shared_ptr<FolderNames> names = std::make_shared<FolderNames>();
};

/// The standard's recursive walk does not follow such links either, where it knows them.
bool isLink(const fs::directory_entry& entry) {
    std::error_code ignored;
    return entry.is_symlink(ignored);
}

void addEntry(const Folder& folder, const fs::directory_entry& entry, Listing& listing) {
    std::error_code ignored;
    const bool isFolder = entry.is_directory(ignored);
    if (!isFolder && !entry.is_regular_file(ignored)) {
        return;
    }
    std::string name = platform::utf8FromPath(entry.path().filename());
    std::string text = folder.text + (folder.text.ends_with('\\') ? "" : "\\") + name;
    if (isFolder && !isLink(entry) && isFolderToScan(text)) {
        listing.folders.push_back({entry.path(), std::move(text)});
    } else if (!isFolder && isCfgFileName(name)) {
        listing.cfgFiles.push_back({entry.path(), std::move(text)});
    }
    (isFolder ? listing.names->folders : listing.names->files).push_back(std::move(name));
}

/// As much of the folder as can be read.
Listing listingOf(const Folder& folder) {
    Listing listing;
    std::error_code error;
    fs::directory_iterator entries(folder.path, error);
    while (!error && entries != fs::directory_iterator()) {
        addEntry(folder, *entries, listing);
        entries.increment(error);
    }
    return listing;
}

std::string_view nameOf(const Folder& folder) {
    const std::string_view text = folder.text;
    return text.substr(text.rfind('\\') + 1);
}

/// Some machines show a link as a folder. Round such a loop the names repeat, so that few folders need a closer look.
bool leadsBack(const Folder& folder, const std::vector<const Folder*>& ancestors) {
    const std::string_view name = nameOf(folder);
    return std::any_of(ancestors.begin(), ancestors.end(), [&folder, name](const Folder* ancestor) {
        std::error_code ignored;
        return nameOf(*ancestor) == name && fs::equivalent(ancestor->path, folder.path, ignored);
    });
}

class Walk {
public:
    Walk(const FolderVisit& enter, const FileVisit& visit) : enter_(enter), visit_(visit) {}

    bool into(const Folder& folder) {
        if (leadsBack(folder, ancestors_)) {
            return true;
        }
        if (!enter_(folder.text)) {
            return false;
        }
        Listing listing = listingOf(folder);
        for (Folder& file : listing.cfgFiles) {
            if (!visit_({std::move(file.path), std::move(file.text), listing.names})) {
                return false;
            }
        }
        ancestors_.push_back(&folder);
        const bool goesOn = std::all_of(listing.folders.begin(), listing.folders.end(),
                                        [this](const Folder& inner) { return into(inner); });
        ancestors_.pop_back();
        return goesOn;
    }

private:
    const FolderVisit& enter_;
    const FileVisit& visit_;
    std::vector<const Folder*> ancestors_; // of the folder that is being read, the outermost first
};

} // namespace

bool isCfgFileName(std::string_view name) {
    const std::string upper = asciiUpper(name);
    return upper == "AIRCRAFT.CFG" || upper == "SIM.CFG";
}

bool isFolderToScan(std::string_view path) {
    return !contains(path, "airport") && characterCount(path) < longestPath;
}

bool isIvaoPath(std::string_view path) {
    return contains(path, "ivao_x-csl") || contains(path, "IVAO_MTL");
}

bool walkFolder(const fs::path& folder, const FolderVisit& enter, const FileVisit& visit) {
    const fs::directory_iterator opened(folder); // throws, where the folders inside are skipped
    return Walk(enter, visit).into({folder, platform::backslashText(folder)});
}
