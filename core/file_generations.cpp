// core/file_generations.cpp
#include "core/file_generations.h"

#include <string_view>
#include <system_error>

#include <fmt/format.h>

#include "core/log.h"
#include "platform/files.h"
#include "platform/text_encoding.h"

namespace fs = std::filesystem;

namespace {

bool hasDot(const fs::path& path, std::string_view routine) {
    if (path.filename().native().find('.') != fs::path::string_type::npos) {
        return true;
    }
    logError(fmt::format("{}: no dot in filename: {}", routine, platform::utf8FromPath(path)));
    return false;
}

/// The path with zeros before the last dot of its name.
fs::path generation(const fs::path& path, std::string_view zeros) {
    fs::path::string_type name = path.filename().native();
    name.insert(name.rfind('.'), fs::path(zeros).native());
    return path.parent_path() / name;
}

/// Copied beside and renamed over: mingw's copy_file refuses to overwrite, and a copy that breaks off costs nothing.
std::error_code copyOver(const fs::path& from, const fs::path& to) {
    fs::path beside = to;
    beside += ".new";
    std::error_code error;
    std::error_code ignored;
    fs::remove(beside, ignored);
    if (fs::copy_file(from, beside, error)) {
        fs::rename(beside, to, error);
    }
    if (error) {
        fs::remove(beside, ignored);
    }
    return error;
}

/// False when the copy failed; no source is no failure.
bool copyIfThere(const fs::path& from, const fs::path& to) {
    std::error_code error;
    const bool there = fs::exists(from, error);
    if (error) {
        logError(fmt::format("exists({}): {}", platform::utf8FromPath(from), platform::readableText(error.message())));
        return false;
    }
    if (!there) {
        return true;
    }
    error = copyOver(from, to);
    if (error) {
        logError(fmt::format("copy {} -> {} failed: {}", platform::utf8FromPath(from), platform::utf8FromPath(to),
                             platform::readableText(error.message())));
        return false;
    }
    return true;
}

} // namespace

bool gf_save1GenerationOf(const fs::path& path) {
    return hasDot(path, "gf_save1GenerationOf") && copyIfThere(path, generation(path, "0"));
}

void gf_saveUpto3GenerationsOf(const fs::path& path) {
    if (!hasDot(path, "gf_saveUpto3GenerationsOf")) {
        return;
    }
    copyIfThere(generation(path, "00"), generation(path, "000"));
    copyIfThere(generation(path, "0"), generation(path, "00"));
    copyIfThere(path, generation(path, "0"));
}
