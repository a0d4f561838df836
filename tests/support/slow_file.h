// tests/support/slow_file.h
// A file whose reader waits until the test has something for it; for the native tests alone.
#pragma once

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "tests/support/eventually.h"
#include "tests/support/temporary_folder.h"

/// In the place of a file, with the file's bytes. Whoever opens it waits until they are let in.
class SlowFile {
public:
    explicit SlowFile(const std::filesystem::path& path)
        : path_(std::filesystem::absolute(path)), bytes_(readFile(path_)) {
        std::filesystem::remove(path_);
        mkfifo(path_.c_str(), 0600);
    }
    /// Lets go whoever still waits.
    ~SlowFile() {
        const int pipe = open(path_.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
        std::filesystem::remove(path_);
        close(pipe);
    }
    SlowFile(const SlowFile&) = delete;
    SlowFile& operator=(const SlowFile&) = delete;

    /// The reader that waits, or comes soon, has the bytes; the next one waits again. False when none comes.
    bool letIn() const {
        int pipe = -1;
        const bool isOpened = eventually([&] {
            pipe = open(path_.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC);
            return pipe >= 0;
        });
        if (!isOpened) {
            return false;
        }
        const bool isWritten = write(pipe, bytes_.data(), bytes_.size()) == static_cast<ssize_t>(bytes_.size());
        close(pipe);
        return isWritten;
    }

private:
    std::filesystem::path path_;
    std::string bytes_; // fewer than a pipe takes at once
};
