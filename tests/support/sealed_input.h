// tests/support/sealed_input.h
// Sealed data files in the folder "input" of the working directory.
#pragma once

#include <filesystem>
#include <string_view>

#include "distribution/sealed_file.h"
#include "tests/support/temporary_folder.h"

/// A container with this clear text, under the key of this build or another one.
inline void writeSealed(const std::filesystem::path& path, std::string_view clear, const DataKey& key = gf_dataKey()) {
    const std::filesystem::path source = "to_be_sealed";
    writeFile(source, clear);
    if (path.has_parent_path()) {
        std::filesystem::create_directories(path.parent_path());
    }
    lf_streamSealFile(source, path, key);
    std::filesystem::remove(source);
}
