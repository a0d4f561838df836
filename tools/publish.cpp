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
            fs::copy(source / folder.source, stage / folder.target, fs::copy_options::recursive);
        }
    }
}

void moveIn(const fs::path& from, const fs::path& to) {
    fs::create_directories(to.parent_path());
    if (const std::error_code error = platform::replaceFile(from, to)) {
        throw std::runtime_error(
            fmt::format("cannot write {}: {}", platform::utf8FromPath(to), platform::readableText(error.message())));
    }
}

std::vector<fs::path> filesOf(const fs::path& folder) {
    std::vector<fs::path> files;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        if (entry.is_regular_file()) {
            files.push_back(entry.path().lexically_relative(folder));
        }
    }
    return files;
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
    const Stage stage(fs::absolute(target).lexically_normal());
    sealDataFiles(source, stage.path(), key);
    copyFolders(source, stage.path());
    for (const fs::path& file : filesOf(stage.path())) {
        moveIn(stage.path() / file, target / file);
    }
    writeText(stage.path() / versionFile, versionsText(version, target));
    moveIn(stage.path() / versionFile, target / versionFile);
}
