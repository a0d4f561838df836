// platform/posix/system_sleep.cpp
#include "platform/system_sleep.h"

#include <thread>

namespace platform {

void systemSleep(std::chrono::nanoseconds duration) {
    std::this_thread::sleep_for(duration);
}

} // namespace platform
