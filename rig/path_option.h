// rig/path_option.h
// Options that name a file or folder. For the executables' command lines, on the main thread.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "platform/files.h"

/// CLI11 knows texts; paths come from UTF-8.
inline CLI::Option* addPath(CLI::App& command, const std::string& option, std::filesystem::path& path,
                            const std::string& help) {
    return command.add_option_function<std::string>(
        option, [&path](const std::string& text) { path = platform::pathFromUtf8(text); }, help);
}

/// The same for an option that may name several.
inline CLI::Option* addPaths(CLI::App& command, const std::string& option, std::vector<std::filesystem::path>& paths,
                             const std::string& help) {
    return command.add_option_function<std::vector<std::string>>(
        option,
        [&paths](const std::vector<std::string>& texts) {
            for (const std::string& text : texts) {
                paths.push_back(platform::pathFromUtf8(text));
            }
        },
        help);
}
