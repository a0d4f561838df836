// bench/measuring.h
// What the benchmarks share: a place to work in, times, and the line of a figure.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdio>
#include <filesystem>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include <fmt/format.h>

#include "platform/clock.h"

/// A folder that goes again.
class BenchFolder {
public:
    BenchFolder()
        : path_(std::filesystem::temp_directory_path() / ("tarnwing_bench_" + std::to_string(std::random_device()()))) {
        std::filesystem::create_directories(path_);
    }
    ~BenchFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    BenchFolder(const BenchFolder&) = delete;
    BenchFolder& operator=(const BenchFolder&) = delete;

    const std::filesystem::path& path() const { return path_; }
    std::filesystem::path operator/(const char* name) const { return path_ / name; }

private:
    std::filesystem::path path_;
};

/// One that is the working directory meanwhile.
class WorkFolder {
public:
    WorkFolder() { std::filesystem::current_path(folder_.path()); }
    ~WorkFolder() {
        std::error_code ignored;
        std::filesystem::current_path(std::filesystem::temp_directory_path(), ignored);
    }
    WorkFolder(const WorkFolder&) = delete;
    WorkFolder& operator=(const WorkFolder&) = delete;

    const std::filesystem::path& path() const { return folder_.path(); }

private:
    BenchFolder folder_;
};

double millisecondsOf(auto work) {
    const platform::SteadyTime start = platform::steadyNow();
    work();
    return std::chrono::duration<double, std::milli>(platform::steadyNow() - start).count();
}

/// Of at least one value.
inline double median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

/// The line of a figure whose name contains the filter; `value` with its unit.
inline void print(std::string_view filter, std::string_view name, std::string_view value) {
    if (name.find(filter) != std::string_view::npos) {
        std::puts(fmt::format("{} = {}", name, value).c_str());
        std::fflush(stdout);
    }
}

inline void print(std::string_view filter, std::string_view name, double value, std::string_view unit) {
    print(filter, name, fmt::format("{:.3f} {}", value, unit));
}
