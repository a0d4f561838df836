// platform/windows/single_instance.cpp
#include "platform/single_instance.h"

#include <windows.h>

#include "platform/windows/wide_text.h"

namespace platform {

SingleInstance::SingleInstance(std::string_view name) {
    const std::wstring wideName = wideFromUtf8(name);
    handle_ = reinterpret_cast<std::intptr_t>(CreateMutexW(nullptr, FALSE, wideName.c_str()));
    const DWORD error = GetLastError();
    // Access is denied when the first instance was started as administrator and this one was not.
    alreadyRuns_ = error == ERROR_ALREADY_EXISTS || (handle_ == 0 && error == ERROR_ACCESS_DENIED);
}

SingleInstance::~SingleInstance() {
    if (handle_ != 0) {
        CloseHandle(reinterpret_cast<HANDLE>(handle_));
    }
}

} // namespace platform
