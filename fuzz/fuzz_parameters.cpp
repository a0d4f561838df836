// fuzz/fuzz_parameters.cpp
// parameters.xml: whatever it holds, the settings end within their limits, and one save makes it a file that keeps
// them.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>

#include "core/parameter_file.h"
#include "core/parameters.h"
#include "fuzz/memory_folder.h"
#include "platform/files.h"
#include "platform/text_encoding.h"

namespace {

void require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

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
    static const MemoryFolder folder("fuzz_parameters");
    platform::setRoamingAppDataFolder(folder.file("."));
    std::filesystem::create_directories(gf_parameterFolder());
    // A new version deletes old files in the working directory: let that be the folder while an input runs.
    const WorkingDirectory here(folder.file("."));
    PROGRAM_VERSION.setDefault("");
    resetParameters();
    writeInput(gf_parameterFile(), data, size);

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
