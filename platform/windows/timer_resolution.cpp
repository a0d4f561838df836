// platform/windows/timer_resolution.cpp
#include "platform/timer_resolution.h"

#include <windows.h>

#include <mmsystem.h>

namespace platform {

namespace {

/// Newer systems take the resolution back from a program whose window is covered, as ours is by the simulator, unless
/// the program asks otherwise. Older ones refuse the wish and need none.
void keepResolutionWhenCovered() {
    PROCESS_POWER_THROTTLING_STATE state{};
    state.Version = PROCESS_POWER_THROTTLING_CURRENT_VERSION;
    state.ControlMask = PROCESS_POWER_THROTTLING_IGNORE_TIMER_RESOLUTION;
    SetProcessInformation(GetCurrentProcess(), ProcessPowerThrottling, &state, sizeof state);
}

bool beginPeriod(unsigned milliseconds) {
    keepResolutionWhenCovered();
    return timeBeginPeriod(milliseconds) == TIMERR_NOERROR;
}

} // namespace

TimerResolution::TimerResolution(unsigned milliseconds)
    : milliseconds_(milliseconds), given_(beginPeriod(milliseconds)) {}

TimerResolution::~TimerResolution() {
    if (given_) {
        timeEndPeriod(milliseconds_);
    }
}

} // namespace platform
