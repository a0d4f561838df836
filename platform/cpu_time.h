// platform/cpu_time.h
// How much of a processor a thread has used.
#pragma once

#include <chrono>

namespace platform {

/// Time that the calling thread has spent on a processor. On Windows it counts in steps of some 16 ms.
std::chrono::nanoseconds cpuTimeOfThisThread();

} // namespace platform
