#include "platform/cpu_time.h"

#include <ctime>

namespace platform {

std::chrono::nanoseconds cpuTimeOfThisProcess() {
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

} // namespace platform
