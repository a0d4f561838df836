// platform/posix/shell_open.cpp
// There is no desktop to ask natively: what exists counts as opened.
#include "platform/shell_open.h"

namespace platform {

bool openForUser(const std::filesystem::path& path) {
    std::error_code ignored;
    return std::filesystem::exists(path, ignored);
}

} // namespace platform
