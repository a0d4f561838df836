// platform/posix/files.cpp
#include "platform/files.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/system_folders.h"

namespace platform {

namespace {

class Descriptor {
public:
    explicit Descriptor(int fd) : fd_(fd) {}
    ~Descriptor() {
        if (fd_ >= 0) {
            close(fd_);
        }
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int get() const { return fd_; }

private:
    int fd_;
};

std::error_code lastError() {
    return {errno, std::generic_category()};
}

std::error_code syncToDisk(const std::filesystem::path& path) {
    const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (file.get() < 0 || fsync(file.get()) != 0) {
        return lastError();
    }
    return {};
}

struct FolderCloser {
    void operator()(DIR* folder) const { closedir(folder); }
};

using Kind = FolderEntry::Kind;

/// Of a link, or where the file system does not tell.
std::optional<Kind> askedKind(int folder, const dirent& entry) {
    struct stat found {};
    if (fstatat(folder, entry.d_name, &found, 0) != 0) {
        return std::nullopt;
    }
    if (S_ISREG(found.st_mode)) {
        return Kind::file;
    }
    if (!S_ISDIR(found.st_mode)) {
        return std::nullopt;
    }
    const bool isLink = fstatat(folder, entry.d_name, &found, AT_SYMLINK_NOFOLLOW) == 0 && S_ISLNK(found.st_mode);
    return isLink ? Kind::linkedFolder : Kind::folder;
}

std::optional<Kind> kindOf(int folder, const dirent& entry) {
    switch (entry.d_type) {
    case DT_REG: return Kind::file;
    case DT_DIR: return Kind::folder;
    case DT_LNK:
    case DT_UNKNOWN: return askedKind(folder, entry);
    default: return std::nullopt;
    }
}

bool isDots(const char* name) {
    return std::strcmp(name, ".") == 0 || std::strcmp(name, "..") == 0;
}

std::filesystem::path homeFolder() {
    const char* home = std::getenv("HOME");
    return home != nullptr ? home : "";
}

} // namespace

std::filesystem::path systemRoamingFolder() {
    if (const char* config = std::getenv("XDG_CONFIG_HOME"); config != nullptr && *config != '\0') {
        return config;
    }
    const std::filesystem::path home = homeFolder();
    return home.empty() ? home : home / ".config";
}

std::filesystem::path systemPublicDocumentsFolder() {
    const std::filesystem::path home = homeFolder();
    return home.empty() ? home : home / "Public" / "Documents";
}

std::filesystem::path systemDocumentsFolder() {
    const std::filesystem::path home = homeFolder();
    return home.empty() ? home : home / "Documents";
}

std::vector<std::filesystem::path> programFilesFolders() {
    return {"/usr", "/opt"};
}

std::error_code replaceFile(const std::filesystem::path& from, const std::filesystem::path& to) {
    if (const std::error_code error = syncToDisk(from)) {
        return error;
    }
    if (std::rename(from.c_str(), to.c_str()) != 0) {
        return lastError();
    }
    // The new name stands; that it is on the disk already is asked for, but not every file system grants it.
    syncToDisk(to.has_parent_path() ? to.parent_path() : std::filesystem::path("."));
    return {};
}

void listFolder(const std::string& folder, const std::function<void(FolderEntry)>& visit) {
    const std::unique_ptr<DIR, FolderCloser> opened(opendir(folder.c_str()));
    if (!opened) {
        return;
    }
    while (const dirent* const entry = readdir(opened.get())) {
        if (isDots(entry->d_name)) {
            continue;
        }
        if (const std::optional<Kind> kind = kindOf(dirfd(opened.get()), *entry)) {
            visit({entry->d_name, *kind});
        }
    }
}

bool writeVanishingFile(const std::filesystem::path& file) {
    const Descriptor created(open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600));
    if (created.get() < 0) {
        return false;
    }
    const bool written = write(created.get(), "w", 1) == 1;
    return unlink(file.c_str()) == 0 && written;
}

} // namespace platform
