// platform/posix/files.cpp
#include "platform/files.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
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

bool writeVanishingFile(const std::filesystem::path& file) {
    const Descriptor created(open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600));
    if (created.get() < 0) {
        return false;
    }
    const bool written = write(created.get(), "w", 1) == 1;
    return unlink(file.c_str()) == 0 && written;
}

} // namespace platform
