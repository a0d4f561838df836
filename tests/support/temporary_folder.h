// tests/support/temporary_folder.h
// A working directory of a test's own.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

/// A fresh folder that is the working directory while it lives, with the roaming application-data folder inside it;
/// both go with it.
class TemporaryFolder {
public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::filesystem::path& path() const { return path_; }

private:
    std::filesystem::path path_;
    std::filesystem::path former_;
};

void writeFile(const std::filesystem::path& path, std::string_view bytes);
std::string readFile(const std::filesystem::path& path);
