// platform/timer_resolution.h
// The grain of the system timer, on which the sleeps of the run loop depend.
#pragma once

namespace platform {

/// Asks the system timer for a resolution of `milliseconds` while it lives, and hands it back if it was given.
class TimerResolution {
public:
    explicit TimerResolution(unsigned milliseconds);
    ~TimerResolution();
    TimerResolution(const TimerResolution&) = delete;
    TimerResolution& operator=(const TimerResolution&) = delete;

    bool given() const { return given_; }

private:
    unsigned milliseconds_;
    bool given_;
};

} // namespace platform
