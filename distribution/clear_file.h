// distribution/clear_file.h
// The clear text of a data file, which is on the disk only while it is read. Without state; the run thread uses it.
#pragma once

#include <filesystem>
#include <utility>

/// Removes the file if it exists. A failure is an error line.
void lf_removeClearFile(const std::filesystem::path& path);

/// Owns the name of a clear file from before it is written: the file goes on every way out.
class ClearFile {
public:
    explicit ClearFile(std::filesystem::path path) : path_(std::move(path)) {}
    ~ClearFile() { lf_removeClearFile(path_); }
    ClearFile(const ClearFile&) = delete;
    ClearFile& operator=(const ClearFile&) = delete;

    const std::filesystem::path& path() const { return path_; }

private:
    std::filesystem::path path_;
};

/// Removes what a process that was killed while it read has left in "input". At the start of a run, before any reading.
void gf_removeLeftOverClearFiles();
