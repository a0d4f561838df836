// platform/clock.cpp
#include "platform/clock.h"

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <thread>

#include "platform/system_sleep.h"

namespace platform {

namespace {

using std::chrono::nanoseconds;

std::atomic<bool> manual{false};
std::atomic<std::int64_t> manualWallNs{0};
std::atomic<std::int64_t> manualSteadyNs{0};

std::mutex heldLock;
std::condition_variable clockMoved;
bool held = false; // under heldLock

/// Under heldLock.
void moveClocks(nanoseconds by) {
    manualWallNs += by.count();
    manualSteadyNs += by.count();
    clockMoved.notify_all();
}

void sleepByHand(nanoseconds duration) {
    std::unique_lock lock(heldLock);
    if (held) {
        const std::int64_t end = manualSteadyNs + duration.count();
        clockMoved.wait(lock, [end] { return !held || manualSteadyNs >= end; });
        return;
    }
    moveClocks(duration);
    lock.unlock();
    std::this_thread::yield();
}

} // namespace

WallTime wallNow() {
    if (manual) {
        return WallTime(std::chrono::duration_cast<WallTime::duration>(nanoseconds(manualWallNs)));
    }
    return std::chrono::system_clock::now();
}

SteadyTime steadyNow() {
    if (manual) {
        return SteadyTime(nanoseconds(manualSteadyNs));
    }
    return std::chrono::steady_clock::now();
}

void sleepFor(std::chrono::steady_clock::duration duration) {
    if (duration <= std::chrono::steady_clock::duration::zero()) {
        return;
    }
    if (manual) {
        sleepByHand(duration);
    } else {
        systemSleep(duration);
    }
}

ManualClock::ManualClock(WallTime wall) {
    setWall(wall);
    manualSteadyNs =
        std::chrono::duration_cast<nanoseconds>(std::chrono::steady_clock::now().time_since_epoch()).count();
    manual = true;
}

ManualClock::~ManualClock() {
    release();
    manual = false;
}

void ManualClock::advance(nanoseconds by) {
    const std::lock_guard lock(heldLock);
    moveClocks(by);
}

void ManualClock::setWall(WallTime wall) {
    manualWallNs = std::chrono::duration_cast<nanoseconds>(wall.time_since_epoch()).count();
}

void ManualClock::hold() {
    const std::lock_guard lock(heldLock);
    held = true;
}

void ManualClock::release() {
    const std::lock_guard lock(heldLock);
    held = false;
    clockMoved.notify_all();
}

} // namespace platform
