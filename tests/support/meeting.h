// tests/support/meeting.h
// A point where threads wait for each other, again and again. Usable from any thread.
#pragma once

#include <atomic>
#include <thread>

/// Nobody sleeps in here, so that nobody can be left asleep.
class Meeting {
public:
    explicit Meeting(int threads) : threads_(threads) {}

    /// Waits until all have come.
    void arrive_and_wait() {
        const int thisRound = round_;
        if (++here_ == threads_) {
            here_ = 0;
            ++round_;
        }
        while (round_ == thisRound) {
            std::this_thread::yield();
        }
    }

private:
    const int threads_;
    std::atomic<int> here_ = 0;
    std::atomic<int> round_ = 0;
};
