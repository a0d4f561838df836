// platform/windows/timer_resolution.cpp
#include "platform/timer_resolution.h"

#include <windows.h>

#include <mmsystem.h>

namespace platform {

TimerResolution::TimerResolution(unsigned milliseconds)
    : milliseconds_(milliseconds), given_(timeBeginPeriod(milliseconds) == TIMERR_NOERROR) {}

TimerResolution::~TimerResolution() {
    if (given_) {
        timeEndPeriod(milliseconds_);
    }
}

} // namespace platform
