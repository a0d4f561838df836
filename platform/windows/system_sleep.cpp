// platform/windows/system_sleep.cpp
#include "platform/system_sleep.h"

#include <windows.h>

namespace platform {

void systemSleep(std::chrono::nanoseconds duration) {
    Sleep(static_cast<DWORD>(std::chrono::ceil<std::chrono::milliseconds>(duration).count()));
}

} // namespace platform
