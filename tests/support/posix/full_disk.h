// tests/support/posix/full_disk.h
// A disk without space, as far as this process can tell. For one test at a time.
#pragma once

#include <csignal>
#include <sys/resource.h>

/// No file of this process grows beyond this size while it lives, as on a full disk.
class FullDisk {
public:
    explicit FullDisk(rlim_t bytes) {
        getrlimit(RLIMIT_FSIZE, &former_);
        formerAction_ = std::signal(SIGXFSZ, SIG_IGN);
        const rlimit limit{bytes, former_.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FullDisk() {
        setrlimit(RLIMIT_FSIZE, &former_);
        std::signal(SIGXFSZ, formerAction_);
    }
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;

private:
    rlimit former_{};
    void (*formerAction_)(int) = SIG_DFL;
};
