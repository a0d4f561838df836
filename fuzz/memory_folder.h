// fuzz/memory_folder.h
// A folder that goes with the process; in memory where the machine has such a place.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>

class MemoryFolder {
public:
    explicit MemoryFolder(const std::string& name) {
        const std::filesystem::path memory = "/dev/shm";
        const auto base = std::filesystem::is_directory(memory) ? memory : std::filesystem::temp_directory_path();
        path_ = base / (name + "_" + std::to_string(std::random_device()()));
        std::filesystem::create_directories(path_);
    }
    ~MemoryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    MemoryFolder(const MemoryFolder&) = delete;
    MemoryFolder& operator=(const MemoryFolder&) = delete;

    std::filesystem::path file(const char* name) const { return path_ / name; }

private:
    std::filesystem::path path_;
};

inline void writeInput(const std::filesystem::path& path, const std::uint8_t* data, std::size_t size) {
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
}

/// The working directory while an input runs. It must not outlast it: the fuzzer names its corpus and its findings from
/// where it was started.
class WorkingDirectory {
public:
    explicit WorkingDirectory(const std::filesystem::path& folder) : former_(std::filesystem::current_path()) {
        std::filesystem::current_path(folder);
    }
    ~WorkingDirectory() { std::filesystem::current_path(former_); }
    WorkingDirectory(const WorkingDirectory&) = delete;
    WorkingDirectory& operator=(const WorkingDirectory&) = delete;

private:
    std::filesystem::path former_;
};
