// platform/windows/shell_open.cpp
#include "platform/shell_open.h"

#include <windows.h>

#include <shellapi.h>

namespace platform {

bool openForUser(const std::filesystem::path& path) {
    // The shell's answer is an instance handle for old times' sake; above 32 means success.
    const auto answer =
        reinterpret_cast<INT_PTR>(ShellExecuteW(nullptr, L"open", path.c_str(), nullptr, nullptr, SW_SHOWNORMAL));
    return answer > 32;
}

} // namespace platform
