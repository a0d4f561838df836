// fuzz/fuzz_versions_json.cpp
// versions.json: whatever it holds, only whole versions come out, and their text is read as the same version.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "distribution/check_versions.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto versions = parseWebVersions({reinterpret_cast<const char*>(data), size});
    if (!versions) {
        return 0;
    }
    for (const auto& [key, version] : *versions) {
        if (version.major < 0 || version.minor < 0 || version.patch < 0 ||
            parseVersion(versionText(version)) != version) {
            std::abort();
        }
    }
    return 0;
}
