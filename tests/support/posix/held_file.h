// tests/support/posix/held_file.h
// A file whose readers wait in the system, while it stays an ordinary file to whoever looks at its folder.
#pragma once

#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <unistd.h>

/// Whoever opens the file waits until this is let go; the system itself gives up after 45 s. Nobody may have it open.
class HeldFile {
public:
    explicit HeldFile(const std::filesystem::path& path) : file_(open(path.c_str(), O_RDONLY | O_CLOEXEC)) {
        // The signal that tells of a reader is one that is ignored if nobody asks for it.
        isHeld_ = file_ >= 0 && fcntl(file_, F_SETSIG, SIGURG) == 0 && fcntl(file_, F_SETLEASE, F_WRLCK) == 0;
    }
    ~HeldFile() { letGo(); }
    HeldFile(const HeldFile&) = delete;
    HeldFile& operator=(const HeldFile&) = delete;

    /// False where the file system cannot do it.
    bool isHeld() const { return isHeld_; }
    /// Whether somebody waits.
    bool isAwaited() const { return fcntl(file_, F_GETLEASE) != F_WRLCK; }
    void letGo() {
        if (file_ >= 0) {
            close(file_);
            file_ = -1;
        }
    }

private:
    int file_;
    bool isHeld_ = false;
};
