// tests/support/meeting.h
// A point where threads wait for each other, again and again. Usable from any thread.
#pragma once

#include <condition_variable>
#include <mutex>

class Meeting {
public:
    explicit Meeting(int threads) : threads_(threads) {}

    /// Waits until all have come.
    void arrive_and_wait() {
        std::unique_lock lock(lock_);
        const int thisRound = round_;
        if (++here_ == threads_) {
            here_ = 0;
            ++round_;
            allHere_.notify_all();
            return;
        }
        allHere_.wait(lock, [&] { return round_ != thisRound; });
    }

private:
    const int threads_;
    int here_ = 0;
    int round_ = 0;
    std::mutex lock_;
    std::condition_variable allHere_;
};
