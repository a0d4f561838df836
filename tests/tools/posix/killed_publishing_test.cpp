// A publishing that is killed at any of its steps.
#include <gmock/gmock.h>

#include <set>

#include <fmt/format.h>

#include "distribution/check_versions.h"
#include "tests/support/log_capture.h"
#include "tests/support/posix/killed_process.h"
#include "tools/publish.h"

namespace fs = std::filesystem;

namespace {

void publish(int number) {
    writeFile("xml/dbase.xml", fmt::format("dbase {}", number));
    writeFile("xml/airports.xml", fmt::format("airports {}", number));
    publishDownloads("xml", {number, 0, 0}, "served", gf_dataKey());
}

std::string opened(const char* name) {
    const bool isWhole = gf_streamDecrypt(fmt::format("served/downloads/11/{}.enc", name), "opened");
    return isWhole ? readFile("opened") : "not whole";
}

/// The number of the set that a program gets; 0 when there is nothing at all, -1 when it is of two sets.
int servedSet() {
    if (!fs::exists("served/downloads")) {
        return 0;
    }
    const auto versions = parseWebVersions(readFile("served/downloads/versions.json"));
    const int number = versions ? versions->at("dbase").major : -1;
    const bool isOneSet = opened("dbase") == fmt::format("dbase {}", number) &&
                          opened("airports") == fmt::format("airports {}", number) &&
                          readFile("served/downloads/docs/notes.txt") == "notes";
    return isOneSet ? number : -1;
}

} // namespace

TEST(KilledPublishing, leavesOneWholeSetOrNothingAndTheNextOneMendsIt) {
    if (!canTrace()) {
        GTEST_SKIP() << "this machine does not let a process be traced";
    }
    const LogCapture log;
    const TemporaryFolder folder;
    writeFile("xml/docs/notes.txt", "notes");
    publish(1);
    fs::copy("served", "first", fs::copy_options::recursive);
    std::set<int> seen;
    // A call's end and the next one's begin are two stops at one state of the disk.
    for (int stops = 0; isKilledAfter(stops, [] { publish(2); }); stops += 2) {
        const int number = servedSet();
        seen.insert(number);
        ASSERT_NE(number, -1) << "killed after " << stops;
        if (number == 0) {
            EXPECT_ANY_THROW(publishDownloads("nothing", {3, 0, 0}, "served", gf_dataKey()));
            ASSERT_EQ(servedSet(), 1) << "killed after " << stops;
        }
        publish(3);
        ASSERT_EQ(servedSet(), 3) << "killed after " << stops;
        EXPECT_FALSE(fs::exists("served.new"));
        EXPECT_FALSE(fs::exists("served/downloads.old"));
        fs::remove_all("served");
        fs::copy("first", "served", fs::copy_options::recursive);
    }
    EXPECT_THAT(seen, testing::IsSupersetOf({1, 2}));
}
