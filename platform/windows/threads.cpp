// platform/windows/threads.cpp
#include "platform/threads.h"

#include <cerrno>
#include <cstdint>
#include <memory>
#include <process.h>
#include <system_error>
#include <utility>

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

using Body = std::function<void()>;

unsigned __stdcall runBody(void* given) noexcept {
    const std::unique_ptr<Body> body(static_cast<Body*>(given));
    (*body)();
    return 0;
}

} // namespace

void nameThisThread(std::string_view name) {
    static const SetThreadDescriptionCall call = findCall();
    if (call != nullptr) {
        call(GetCurrentThread(), wideFromUtf8(name).c_str());
    }
}

/// Without the standard library's threads: of short ones that are detached while they end, now and then one never runs,
/// or the process crashes.
void startDetached(std::function<void()> body) {
    auto given = std::make_unique<Body>(std::move(body));
    const std::uintptr_t thread = _beginthreadex(nullptr, 0, runBody, given.get(), 0, nullptr);
    if (thread == 0) {
        throw std::system_error(errno, std::generic_category());
    }
    static_cast<void>(given.release()); // the thread's
    CloseHandle(reinterpret_cast<HANDLE>(thread));
}

} // namespace platform
