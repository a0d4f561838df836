// platform/system_sleep.h
// The system's own sleep, behind the clock. Usable from any thread.
#pragma once

#include <chrono>

namespace platform {

/// Sleeps for `duration` (above zero), in whole grains of the system timer.
void systemSleep(std::chrono::nanoseconds duration);

} // namespace platform
