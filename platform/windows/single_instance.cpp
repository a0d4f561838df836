// platform/windows/single_instance.cpp
#include "platform/single_instance.h"

#include <windows.h>

#include "platform/windows/wide_text.h"

namespace platform {

SingleInstance::SingleInstance(std::string_view name) {
    const std::wstring wideName = wideFromUtf8(name);
    handle_ = reinterpret_cast<std::intptr_t>(CreateMutexW(nullptr, FALSE, wideName.c_str()));
    alreadyRuns_ = GetLastError() == ERROR_ALREADY_EXISTS;
}

SingleInstance::~SingleInstance() {
    if (handle_ != 0) {
        CloseHandle(reinterpret_cast<HANDLE>(handle_));
    }
}

} // namespace platform
