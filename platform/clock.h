// platform/clock.h
// The wall clock, the steady clock and the sleeps. Nobody else asks the system for the time.
// Usable from any thread; a test or a replay may set both clocks.
#pragma once

#include <chrono>

namespace platform {

using WallTime = std::chrono::system_clock::time_point;
using SteadyTime = std::chrono::steady_clock::time_point;

WallTime wallNow();
SteadyTime steadyNow();

/// Sleeps for `duration`, to the grain of the system timer; a duration of zero or less returns at once.
void sleepFor(std::chrono::steady_clock::duration duration);

/// Time by hand, for tests and replays: while one exists, both clocks stand still, and a sleep of any thread moves them
/// on by its length and returns after a yield. One at a time.
class ManualClock {
public:
    explicit ManualClock(WallTime wall);
    ~ManualClock();
    ManualClock(const ManualClock&) = delete;
    ManualClock& operator=(const ManualClock&) = delete;

    void advance(std::chrono::nanoseconds by);
    void setWall(WallTime wall);

    /// From now on a sleep lasts until advance() has moved the clock past its end; release() takes that back.
    void hold();
    void release();
};

} // namespace platform
