// tests/liveries/posix/folder_walk_test.cpp
// What only a machine with these names and links can show.
#include "liveries/folder_walk.h"

#include <unistd.h>

#include <gmock/gmock.h>

#include "liveries/aircraft_cfg.h"
#include "tests/liveries/scan_test.h"
#include "tests/support/posix/other_user.h"

namespace fs = std::filesystem;

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class UnusualFolders : public ScanTest {};

} // namespace

TEST_F(UnusualFolders, aLinkThatLoopsIsNotFollowed) {
    writeFile("x/ac/aircraft.cfg", "");
    fs::create_directory_symlink("..", "x/ac/loop");
    EXPECT_THAT(filesToScan("x"), ElementsAre("x\\ac\\aircraft.cfg"));
}

TEST_F(UnusualFolders, aNameThatIsNoTextIsReadAllTheSame) {
    const fs::path folder = fs::path("x") / "ac\xFF";
    makeAircraft(folder, general("A320") + section(0, "title=One\natc_parking_codes=KLM"));
    ASSERT_THAT(filesToScan("x"), ElementsAre("x\\ac\xEF\xBF\xBD\\aircraft.cfg"));
    EXPECT_TRUE(lf_scanFolders({"x"}));
}

TEST_F(UnusualFolders, aFolderThatCannotBeReadCostsItself) {
    writeFile("x/closed/aircraft.cfg", "");
    writeFile("x/open/aircraft.cfg", "");
    fs::permissions("x/closed", fs::perms::none);
    fs::permissions(fs::current_path(), fs::perms::others_exec, fs::perm_options::add); // the other user gets as far
    {
        const OtherUser user; // to the superuser no folder is closed
        if (geteuid() == 0) {
            GTEST_SKIP() << "this process cannot become another user";
        }
        EXPECT_THAT(filesToScan("x"), ElementsAre("x\\open\\aircraft.cfg"));
    }
    fs::permissions("x/closed", fs::perms::owner_all);
}

TEST_F(UnusualFolders, aFolderInThePlaceOfAFileCannotBeRead) {
    fs::create_directories("x/aircraft.cfg");
    ScanState scan;
    EXPECT_THAT(lf_searchLiveriesinFile(1, scannedFile("x/aircraft.cfg"), scan), IsEmpty());
    EXPECT_THAT(log_.lines(), ElementsAre("! Failed reading x\\aircraft.cfg"));
}

// The system tells no size for the files in which it describes itself, and yet they can be read: as if the text had
// come after the size was asked for.
TEST_F(UnusualFolders, ofAFileThatHasGrownSinceItsSizeWasAskedForNoMoreIsRead) {
    fs::create_directories("x");
    fs::create_symlink("/proc/version", "x/aircraft.cfg");
    if (readFile("x/aircraft.cfg").empty()) {
        GTEST_SKIP() << "this system does not describe itself in files";
    }
    ASSERT_EQ(fs::file_size("x/aircraft.cfg"), 0U);
    ScanState scan;
    EXPECT_THAT(lf_searchLiveriesinFile(1, scannedFile("x/aircraft.cfg"), scan), IsEmpty());
    EXPECT_THAT(log_.lines(), ElementsAre("! No text encoding detected for x\\aircraft.cfg"));
}
