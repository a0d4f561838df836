// A scan that one of its files holds, so that the test can look at it, and end it, while it runs.
#include "liveries/livery_scan.h"

#include <chrono>
#include <filesystem>
#include <future>
#include <regex>
#include <string>

#include <gmock/gmock.h>

#include "core/detached_threads.h"
#include "platform/clock.h"
#include "tests/liveries/scan_test.h"
#include "tests/support/eventually.h"
#include "tests/support/posix/held_file.h"

namespace fs = std::filesystem;

using testing::Contains;
using testing::ContainsRegex;
using testing::IsEmpty;
using testing::Not;

namespace {

class RunningScanThreads : public ScanTest {
public:
    RunningScanThreads(const RunningScanThreads&) = delete;
    RunningScanThreads& operator=(const RunningScanThreads&) = delete;
    ~RunningScanThreads() override {
        gf_userCloses();
        if (scan_.valid()) {
            scan_.wait();
        }
        held_.letGo();
        gf_waitForDetachedThreads(std::chrono::seconds(10));
    }

protected:
    RunningScanThreads() {
        for (int i = 0; i < otherFiles; ++i) {
            makeLivery(std::to_string(i));
        }
    }

    void SetUp() override {
        if (!held_.isHeld()) {
            GTEST_SKIP() << "this file system holds no file";
        }
        scan_ = std::async(std::launch::async, [] { return lf_scanFolders({"liveries"}); });
        // It has begun to count the time when a reader is there, and cannot end from here on.
        ASSERT_TRUE(eventually([this] { return held_.isAwaited(); }));
    }

    static fs::path makeLivery(const std::string& name) {
        return makeAircraft(fs::path("liveries") / name,
                            general("A320") + section(0, "title=" + name + "\natc_parking_codes=KLM"));
    }

    /// The files that the message tells of once another second has gone by; -1 when it tells nothing.
    int filesReadAfterASecond() {
        showMessage("not yet", LogCopy::no);
        clock_.advance(std::chrono::seconds(1));
        const bool isTold = eventually([] { return shownMessage() != "not yet"; });
        const std::string message = shownMessage();
        static const std::regex form(R"(Scanning prioritized for liveries \.\.\. liveries\\\d+(?:\\\w+\.\w)?: )"
                                     R"((\d+) files read, \d+ liveries found)");
        std::smatch parts;
        if (!isTold || !std::regex_match(message, parts, form)) {
            ADD_FAILURE() << message;
            return -1;
        }
        return std::stoi(parts[1]);
    }

    static constexpr int otherFiles = 20;

    platform::ManualClock clock_{platform::WallTime{}};
    HeldFile held_{makeLivery("1000")};
    std::future<bool> scan_;
};

} // namespace

TEST_F(RunningScanThreads, tellsEachSecondHowFarItIs) {
    const int first = filesReadAfterASecond();
    const int second = filesReadAfterASecond();
    const int third = filesReadAfterASecond();
    EXPECT_GE(first, 0);
    EXPECT_GE(second, first);
    EXPECT_GE(third, second);
    EXPECT_LE(third, otherFiles + 1);
}

TEST_F(RunningScanThreads, closedInItsMiddleItEndsSoonAndWritesNothing) {
    gf_userCloses();
    ASSERT_EQ(scan_.wait_for(std::chrono::seconds(10)), std::future_status::ready) << "while a file is being read";
    EXPECT_TRUE(scan_.get()) << "it counts as done";
    EXPECT_THAT(Liveries, IsEmpty());
    EXPECT_FALSE(fs::exists(scannedLiveriesFile));
    EXPECT_FALSE(fs::exists("output/errors"));
    EXPECT_THAT(log_.lines(), Not(Contains(ContainsRegex("liverie.* found in"))));
}
