// A scan of so many files that the test can look at it, and end it, while it runs.
#include "liveries/livery_scan.h"

#include <chrono>
#include <future>
#include <regex>

#include "core/detached_threads.h"
#include "platform/clock.h"
#include "tests/liveries/scan_test.h"
#include "tests/support/eventually.h"

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
        gf_waitForDetachedThreads(std::chrono::seconds(10));
    }

protected:
    RunningScanThreads() {
        makeManyFiles();
        scan_ = std::async(std::launch::async, [] { return lf_scanFolders({"liveries"}); });
        // It has its first reader when it has begun to count the time.
        EXPECT_TRUE(eventually([] { return !gf_waitForDetachedThreads(std::chrono::milliseconds(0)); }));
    }

    /// One file under many names: 400,000 sections.
    static void makeManyFiles() {
        std::string cfg = general("A320");
        for (int i = 0; i < 1000; ++i) {
            cfg += section(i, "title=T" + std::to_string(i) + "\natc_parking_codes=KLM");
        }
        const fs::path first = makeAircraft("liveries/0", cfg);
        for (int i = 1; i < 400; ++i) {
            const fs::path folder = fs::path("liveries") / std::to_string(i);
            fs::create_directory(folder);
            fs::create_hard_link(first, folder / "aircraft.cfg");
        }
    }

    /// The files that the message tells of once another second has gone by; -1 when it tells nothing.
    int filesReadAfterASecond() {
        showMessage("not yet", LogCopy::no);
        clock_.advance(std::chrono::seconds(1));
        const bool isTold = eventually([] { return shownMessage() != "not yet"; });
        const std::string message = shownMessage();
        static const std::regex form(R"(Scanning prioritized for liveries \.\.\. liveries\\\d+: )"
                                     R"((\d+) files read, \d+ liveries found)");
        std::smatch parts;
        if (!isTold || !std::regex_match(message, parts, form)) {
            ADD_FAILURE() << message;
            return -1;
        }
        return std::stoi(parts[1]);
    }

    platform::ManualClock clock_{platform::WallTime{}};
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
}

TEST_F(RunningScanThreads, closedInItsMiddleItEndsSoonAndWritesNothing) {
    ASSERT_TRUE(eventually([this] { return filesReadAfterASecond() > 2; })) << "it is in its middle";
    gf_userCloses();
    ASSERT_EQ(scan_.wait_for(std::chrono::seconds(2)), std::future_status::ready);
    EXPECT_TRUE(scan_.get()) << "it counts as done";
    EXPECT_THAT(Liveries, IsEmpty());
    EXPECT_FALSE(fs::exists(scannedLiveriesFile));
    EXPECT_FALSE(fs::exists("output/errors"));
    EXPECT_THAT(log_.lines(), Not(Contains(ContainsRegex("liverie.* found in"))));
}
