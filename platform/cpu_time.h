// platform/cpu_time.h
// How much of a processor this program has used.
#pragma once

#include <chrono>

namespace platform {

/// Time that all threads of this process together have spent on processors. On Windows it counts in steps of some 16
/// ms.
std::chrono::nanoseconds cpuTimeOfThisProcess();

} // namespace platform
