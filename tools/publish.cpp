// tools/publish.cpp
#include "tools/publish.h"

#include <array>
#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "platform/files.h"
#include "platform/text_encoding.h"
#include "tools/files.h"

namespace fs = std::filesystem;

namespace {

constexpr const char* versionFile = "downloads/versions.json";

/// A data file without its ending, and its key in the version file.
struct DataFile {
    const char* name;
    const char* key;
};

constexpr std::array dataFiles{
    DataFile{"dbase", "dbase"},
    DataFile{"airports", "airports"},
    DataFile{"AIG-regcodes", "aig"},
};

struct CopiedFolder {
    const char* source;
    const char* target;
};

constexpr std::array copiedFolders{
    CopiedFolder{"archive", "downloads/P3D/archive"},
    CopiedFolder{"release", "downloads/release"},
    CopiedFolder{"docs", "downloads/docs"},
};

nlohmann::json jsonOf(const ProgramVersion& version) {
    return {{"major", version.major}, {"minor", version.minor}, {"patch", version.patch}};
}

fs::path dataFolder(const fs::path& root) {
    return root / "downloads" / std::to_string(thisVersion.major);
}

/// Without a version for a data file that the server does not have: every program would ask for it at every start.
std::string versionsText(const ProgramVersion& version, const fs::path& target) {
    nlohmann::json versions{{"p3d", jsonOf(thisVersion)}};
    for (const char* key : {"liveries", "addons"}) {
        versions[key] = jsonOf(version);
    }
    for (const DataFile& file : dataFiles) {
        if (fs::exists(dataFolder(target) / (std::string(file.name) + ".enc"))) {
            versions[file.key] = jsonOf(version);
        }
    }
    return versions.dump(2) + "\n";
}

void sealDataFiles(const fs::path& source, const fs::path& stage, const DataKey& key) {
    fs::create_directories(dataFolder(stage));
    int sealed = 0;
    for (const DataFile& file : dataFiles) {
        const fs::path clear = source / (std::string(file.name) + ".xml");
        if (fs::exists(clear)) {
            lf_streamSealFile(clear, dataFolder(stage) / (std::string(file.name) + ".enc"), key);
            ++sealed;
        }
    }
    if (sealed == 0) {
        throw std::runtime_error("no data file in " + platform::utf8FromPath(source));
    }
}

void copyFolders(const fs::path& source, const fs::path& stage) {
    for (const CopiedFolder& folder : copiedFolders) {
        if (fs::is_directory(source / folder.source)) {
            fs::create_directories((stage / folder.target).parent_path());
            fs::copy(source / folder.source, stage / folder.target,
                     fs::copy_options::recursive | fs::copy_options::overwrite_existing);
        }
    }
}

void renameFolder(const fs::path& from, const fs::path& to) {
    std::error_code error;
    fs::rename(from, to, error);
    if (error) {
        throw std::runtime_error(fmt::format("cannot make {} of {}: {}", platform::utf8FromPath(to),
                                             platform::utf8FromPath(from), platform::readableText(error.message())));
    }
}

fs::path liveFolder(const fs::path& target) {
    return target / "downloads";
}

/// The former live folder while the new one takes its place.
fs::path formerFolder(const fs::path& target) {
    return target / "downloads.old";
}

/// After a publishing that was killed while it changed the folders: the former one is live again, or goes if it is no
/// more needed.
void tidyUp(const fs::path& target) {
    if (!fs::exists(formerFolder(target))) {
        return;
    }
    if (fs::exists(liveFolder(target))) {
        fs::remove_all(formerFolder(target));
    } else {
        renameFolder(formerFolder(target), liveFolder(target));
    }
}

/// By two renamings. Between them the server has nothing at all, which leaves a program with the data that it has.
void takePlace(const fs::path& stage, const fs::path& target) {
    fs::create_directories(target);
    if (!fs::exists(liveFolder(target))) {
        renameFolder(liveFolder(stage), liveFolder(target));
        return;
    }
    renameFolder(liveFolder(target), formerFolder(target));
    try {
        renameFolder(liveFolder(stage), liveFolder(target));
    } catch (...) {
        std::error_code ignored;
        fs::rename(formerFolder(target), liveFolder(target), ignored);
        throw;
    }
    std::error_code ignored; // what is left of it goes with the next publishing
    fs::remove_all(formerFolder(target), ignored);
}

/// By a second name for the same file, which is for nothing however large it is; a file system that knows none gets a
/// copy.
void takeOver(const fs::directory_entry& file, const fs::path& to) {
    std::error_code refusal = std::make_error_code(std::errc::not_supported);
    if (!file.is_symlink()) {
        fs::create_hard_link(file.path(), to, refusal);
    }
    if (refusal) {
        fs::copy_file(file.path(), to);
    }
}

/// What is published and not made anew stays. The last step before the version file, for to write into a file that was
/// taken over would be to write into the published one.
void takeOverPublished(const fs::path& target, const fs::path& stage) {
    const fs::path live = liveFolder(target);
    if (!fs::exists(live)) {
        return;
    }
    const auto options = fs::directory_options::follow_directory_symlink;
    for (auto entry = fs::recursive_directory_iterator(live, options); entry != end(entry); ++entry) {
        const fs::path to = liveFolder(stage) / entry->path().lexically_relative(live);
        if (fs::exists(to)) {
            // What was made anew wins, also a file over a folder.
            if (!fs::is_directory(to)) {
                entry.disable_recursion_pending();
            }
        } else if (entry->is_directory()) {
            fs::create_directory(to, entry->path()); // with its permissions
        } else {
            takeOver(*entry, to);
        }
    }
}

/// The folder beside the target in which everything is made; it goes on every way out.
class Stage {
public:
    explicit Stage(const fs::path& target) : path_(target) {
        path_ += ".new";
        fs::remove_all(path_);
        fs::create_directories(path_ / "downloads");
    }
    ~Stage() {
        std::error_code ignored;
        fs::remove_all(path_, ignored);
    }
    Stage(const Stage&) = delete;
    Stage& operator=(const Stage&) = delete;

    const fs::path& path() const { return path_; }

private:
    fs::path path_;
};

} // namespace

void publishDownloads(const fs::path& source, const ProgramVersion& version, const fs::path& target,
                      const DataKey& key) {
    tidyUp(target);
    const Stage stage(fs::absolute(target).lexically_normal());
    sealDataFiles(source, stage.path(), key);
    copyFolders(source, stage.path());
    takeOverPublished(target, stage.path());
    writeText(stage.path() / versionFile, versionsText(version, stage.path()));
    takePlace(stage.path(), target);
}
