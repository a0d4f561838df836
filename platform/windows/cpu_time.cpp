#include "platform/cpu_time.h"

#include <windows.h>

namespace platform {

namespace {

/// File times count by 100 ns.
std::chrono::nanoseconds durationOf(const FILETIME& time) {
    const auto ticks = static_cast<std::int64_t>(std::uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime);
    return std::chrono::nanoseconds(ticks * 100);
}

} // namespace

std::chrono::nanoseconds cpuTimeOfThisProcess() {
    FILETIME created{};
    FILETIME ended{};
    FILETIME inSystem{};
    FILETIME inProgram{};
    if (!GetProcessTimes(GetCurrentProcess(), &created, &ended, &inSystem, &inProgram)) {
        return {};
    }
    return durationOf(inSystem) + durationOf(inProgram);
}

} // namespace platform
