// platform/posix/sibling_program.cpp
#include "platform/sibling_program.h"

#include <cerrno>
#include <filesystem>
#include <stdexcept>
#include <system_error>

#include <spawn.h>
#include <sys/wait.h>

// The environment of this process, which the system's headers do not declare.
extern char** environ; // NOLINT(readability-redundant-declaration): some systems' headers do

namespace platform {

namespace {

constexpr int killedBySignal = 128;

std::filesystem::path besideThis(const std::string& name) {
    return std::filesystem::read_symlink("/proc/self/exe").parent_path() / name;
}

int waitFor(pid_t child) {
    int status = 0;
    while (waitpid(child, &status, 0) < 0) {
        if (errno != EINTR) {
            throw std::runtime_error("lost sight of a program: " + std::generic_category().message(errno));
        }
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : killedBySignal + WTERMSIG(status);
}

} // namespace

int runSibling(const std::string& name, const std::vector<std::string>& arguments) {
    const std::string program = besideThis(name).string();
    std::vector<std::string> texts{program};
    texts.insert(texts.end(), arguments.begin(), arguments.end());
    std::vector<char*> pointers;
    pointers.reserve(texts.size() + 1);
    for (std::string& text : texts) {
        pointers.push_back(text.data());
    }
    pointers.push_back(nullptr);
    pid_t child = 0;
    const int error = posix_spawn(&child, program.c_str(), nullptr, nullptr, pointers.data(), environ);
    if (error != 0) {
        throw std::runtime_error("cannot start " + program + ": " + std::generic_category().message(error));
    }
    return waitFor(child);
}

} // namespace platform
