// platform/posix/single_instance.cpp
// A locked file in the temporary folder stands for the named object; the lock goes with the process.
#include "platform/single_instance.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <fcntl.h>
#include <string>
#include <sys/file.h>
#include <unistd.h>

namespace platform {

namespace {

std::string lockFile(std::string_view name) {
    const char* runtime = std::getenv("XDG_RUNTIME_DIR");
    const char* temporary = std::getenv("TMPDIR");
    std::string path = runtime != nullptr ? runtime : temporary != nullptr ? temporary : "/tmp";
    path += '/';
    std::transform(name.begin(), name.end(), std::back_inserter(path),
                   [](unsigned char c) { return std::isalnum(c) != 0 ? static_cast<char>(c) : '_'; });
    return path + ".lock";
}

} // namespace

SingleInstance::SingleInstance(std::string_view name)
    : handle_(open(lockFile(name).c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600)),
      alreadyRuns_(handle_ >= 0 && flock(static_cast<int>(handle_), LOCK_EX | LOCK_NB) != 0) {}

SingleInstance::~SingleInstance() {
    if (handle_ >= 0) {
        close(static_cast<int>(handle_));
    }
}

} // namespace platform
