// platform/posix/timer_resolution.cpp
// The native timer is finer than a millisecond as it stands: nothing to ask for.
#include "platform/timer_resolution.h"

namespace platform {

TimerResolution::TimerResolution(unsigned milliseconds) : milliseconds_(milliseconds), given_(milliseconds_ > 0) {}

TimerResolution::~TimerResolution() = default;

} // namespace platform
