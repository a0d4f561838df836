#include "core/side_by_side.h"

#include <condition_variable>
#include <mutex>
#include <stdexcept>
#include <thread>

#include <gmock/gmock.h>

namespace {

/// Where two threads wait for one another.
class Meeting {
public:
    void attend() {
        std::unique_lock lock(lock_);
        ++present_;
        changed_.notify_all();
        changed_.wait(lock, [this] { return present_ == 2; });
    }

private:
    std::mutex lock_;
    std::condition_variable changed_;
    int present_ = 0;
};

TEST(SideBySideThreads, bothWorkAtTheSameTimeAndAreOverAtTheEnd) {
    Meeting meeting;
    std::thread::id mine;
    std::thread::id other;
    const auto note = [&meeting](std::thread::id& who) {
        meeting.attend();
        who = std::this_thread::get_id();
    };
    runSideBySide([&] { note(mine); }, "Beside", [&] { note(other); });
    EXPECT_EQ(mine, std::this_thread::get_id());
    EXPECT_NE(other, std::thread::id());
    EXPECT_NE(other, mine);
}

// Without the thread sanitizer, which does not see how the library counts who holds an exception.

TEST(FailingSideBySide, theOtherIsOverWhenMineFails) {
    Meeting meeting;
    bool isOver = false;
    const auto mine = [&meeting] {
        meeting.attend();
        throw std::runtime_error("mine");
    };
    const auto beside = [&] {
        meeting.attend();
        isOver = true;
    };
    EXPECT_THROW(runSideBySide(mine, "Beside", beside), std::runtime_error);
    EXPECT_TRUE(isOver);
}

std::string messageOfBoth(bool mineFails) {
    try {
        runSideBySide(
            [mineFails] {
                if (mineFails) {
                    throw std::runtime_error("mine");
                }
            },
            "Beside", [] { throw std::runtime_error("beside"); });
    } catch (const std::runtime_error& failure) {
        return failure.what();
    }
    return "none";
}

TEST(FailingSideBySide, aFailureArrivesAndMineCountsFirst) {
    EXPECT_EQ(messageOfBoth(false), "beside");
    EXPECT_EQ(messageOfBoth(true), "mine");
}

} // namespace
