// platform/windows/threads.cpp
#include "platform/threads.h"

#include <windows.h>

#include "platform/windows/wide_text.h"

namespace platform {

namespace {

// The call is missing in older systems' libraries, so it is asked for at run time.
using SetThreadDescriptionCall = HRESULT(WINAPI*)(HANDLE, PCWSTR);

SetThreadDescriptionCall findCall() {
    const HMODULE kernel = GetModuleHandleW(L"kernel32.dll");
    return kernel == nullptr ? nullptr
                             : reinterpret_cast<SetThreadDescriptionCall>(
                                   reinterpret_cast<void*>(GetProcAddress(kernel, "SetThreadDescription")));
}

} // namespace

void nameThisThread(std::string_view name) {
    static const SetThreadDescriptionCall call = findCall();
    if (call != nullptr) {
        call(GetCurrentThread(), wideFromUtf8(name).c_str());
    }
}

} // namespace platform
