// liveries/folder_walk.cpp
#include "liveries/folder_walk.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "core/text_parts.h"
#include "liveries/ascii_text.h"
#include "platform/files.h"

namespace fs = std::filesystem;

namespace {

constexpr std::size_t longestPath = 250; // characters; a path text of this length is not gone into

bool contains(std::string_view text, std::string_view part) {
    return text.find(part) != std::string_view::npos;
}

/// A folder that the walk is in, or is still to go into.
struct Folder {
    fs::path::string_type path;
    std::string text; ///< of the path, with backslashes
};

/// What lies in a folder: where to go on, and which files are wanted.
struct Listing {
    std::vector<Folder> folders;
    std::vector<Folder> cfgFiles;
    FolderNames names;
};

fs::path::string_type pathInside(const Folder& folder, const fs::path::string_type& name) {
    fs::path::string_type path = folder.path;
    if (path.back() != '/' && path.back() != fs::path::preferred_separator) {
        path += fs::path::preferred_separator;
    }
    return path += name;
}

void addEntry(const Folder& folder, const platform::FolderEntry& entry, Listing& listing) {
    using Kind = platform::FolderEntry::Kind;
    std::string name = platform::utf8FromNative(entry.name);
    std::string text = folder.text + (folder.text.ends_with('\\') ? "" : "\\") + name;
    // The standard's recursive walk does not follow links to folders either, where it knows them.
    if (entry.kind == Kind::folder && isFolderToScan(text)) {
        listing.folders.push_back({pathInside(folder, entry.name), std::move(text)});
    } else if (entry.kind == Kind::file && isCfgFileName(name)) {
        listing.cfgFiles.push_back({pathInside(folder, entry.name), std::move(text)});
    }
    (entry.kind == Kind::file ? listing.names.files : listing.names.folders).push_back(std::move(name));
}

/// As much of the folder as can be read.
Listing listingOf(const Folder& folder) {
    Listing listing;
    platform::listFolder(folder.path, [&](const platform::FolderEntry& entry) { addEntry(folder, entry, listing); });
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
        return nameOf(*ancestor) == name && fs::equivalent(fs::path(ancestor->path), fs::path(folder.path), ignored);
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
        if (!visitFiles(listing)) {
            return false;
        }
        ancestors_.push_back(&folder);
        const bool goesOn = std::all_of(listing.folders.begin(), listing.folders.end(),
                                        [this](const Folder& inner) { return into(inner); });
        ancestors_.pop_back();
        return goesOn;
    }

private:
    bool visitFiles(Listing& listing) {
        if (listing.cfgFiles.empty()) {
            return true;
        }
        const auto names = std::make_shared<const FolderNames>(std::move(listing.names));
        return std::all_of(listing.cfgFiles.begin(), listing.cfgFiles.end(), [&](Folder& file) {
            return visit_({std::move(file.path), std::move(file.text), names});
        });
    }

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
    return !contains(path, "airport") && utf8Length(path) < longestPath;
}

bool isIvaoPath(std::string_view path) {
    return contains(path, "ivao_x-csl") || contains(path, "IVAO_MTL");
}

bool walkFolder(const fs::path& folder, const FolderVisit& enter, const FileVisit& visit) {
    const fs::directory_iterator opened(folder); // throws, where the folders inside are skipped
    return Walk(enter, visit).into({folder.native(), platform::backslashText(folder)});
}
