// distribution/clear_file.cpp
#include "distribution/clear_file.h"

#include <array>
#include <system_error>

#include <fmt/format.h>

#include "core/log.h"
#include "platform/files.h"

namespace fs = std::filesystem;

void lf_removeClearFile(const fs::path& path) {
    std::error_code error;
    fs::remove(path, error);
    if (error) {
        logError(
            fmt::format("Warning: could not remove {}, errorcode: {}", platform::utf8FromPath(path), error.value()));
    }
}

void gf_removeLeftOverClearFiles() {
    constexpr std::array clearFiles{"input/dbase.xml", "input/airports.xml", "input/AIG-regcodes.xml"};
    for (const char* file : clearFiles) {
        lf_removeClearFile(file);
    }
}
