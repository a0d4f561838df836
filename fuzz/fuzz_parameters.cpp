// fuzz/fuzz_parameters.cpp
// parameters.xml: whatever it holds, the settings end within their limits, and one save makes it a file that keeps them.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>

#include "core/parameter_file.h"
#include "core/parameters.h"
#include "platform/files.h"
#include "platform/text_encoding.h"

namespace fs = std::filesystem;

namespace {

void require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

/// A folder that goes with the process; in memory where the machine has such a place, for each save waits for the disk.
class Folder {
public:
    Folder() {
        const fs::path memory = "/dev/shm";
        const fs::path base = fs::is_directory(memory) ? memory : fs::temp_directory_path();
        path_ = base / ("fuzz_parameters_" + std::to_string(std::random_device()()));
        platform::setRoamingAppDataFolder(path_);
        fs::create_directories(gf_parameterFolder());
    }
    ~Folder() {
        std::error_code ignored;
        fs::remove_all(path_, ignored);
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    const fs::path& path() const { return path_; }

private:
    fs::path path_;
};

/// A new version deletes old files in the working directory: let that be the folder while an input runs.
class WorkingDirectory {
public:
    explicit WorkingDirectory(const fs::path& folder) : former_(fs::current_path()) { fs::current_path(folder); }
    ~WorkingDirectory() { fs::current_path(former_); }
    WorkingDirectory(const WorkingDirectory&) = delete;
    WorkingDirectory& operator=(const WorkingDirectory&) = delete;

private:
    fs::path former_;
};

bool isWithinLimits(const IntParameter& parameter) {
    return parameter.value >= parameter.minimum && parameter.value <= parameter.maximum;
}

void checkSettings() {
    for (const IntParameter* parameter : plainIntegers()) {
        require(isWithinLimits(*parameter));
    }
    for (const ComboParameter* parameter : comboIntegers()) {
        require(isWithinLimits(*parameter));
    }
    for (const StringParameter* parameter : plainStrings()) {
        require(platform::isValidUtf8(parameter->value()));
    }
    for (const EditParameter* parameter : editStrings()) {
        require(platform::isValidUtf8(parameter->value()));
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const Folder folder;
    const WorkingDirectory directory(folder.path());
    PROGRAM_VERSION.setDefault("");
    resetParameters();
    std::ofstream(gf_parameterFile(), std::ios::binary)
        .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));

    gf_readWindowPosition();
    require(isWithinLimits(MAIN_WINDOW_X) && isWithinLimits(MAIN_WINDOW_Y));
    gf_readParameters();
    checkSettings();

    P3D_VERSION.value = 6;
    saveParameter(P3D_VERSION);
    P3D_VERSION.value = 5;
    require(!gf_readParameters());
    checkSettings();
    require(P3D_VERSION.value == 6);
    return 0;
}
