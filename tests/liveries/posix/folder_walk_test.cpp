// tests/liveries/posix/folder_walk_test.cpp
// What only a machine with these names and links can show.
#include "liveries/folder_walk.h"

#include <atomic>
#include <fstream>
#include <string>
#include <thread>
#include <unistd.h>
#include <vector>

#include <gmock/gmock.h>

#include "liveries/aircraft_cfg.h"
#include "tests/liveries/scan_test.h"
#include "tests/support/eventually.h"
#include "tests/support/posix/other_user.h"

namespace fs = std::filesystem;

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class UnusualFolders : public ScanTest {
protected:
    static std::vector<std::string> filesIn(const fs::path& folder) {
        std::vector<std::string> files;
        walkFolder(
            folder, [](std::string_view) { return true; },
            [&files](const ScannedFile& file) {
                files.push_back(file.text);
                return true;
            });
        return files;
    }
};

/// Of a thread of the test's own.
class GrowingFileThreads : public ScanTest {};

} // namespace

TEST_F(UnusualFolders, aLinkThatLoopsIsNotFollowed) {
    writeFile("x/ac/aircraft.cfg", "");
    fs::create_directory_symlink("..", "x/ac/loop");
    EXPECT_THAT(filesIn("x"), ElementsAre("x\\ac\\aircraft.cfg"));
}

TEST_F(UnusualFolders, aNameThatIsNoTextIsReadAllTheSame) {
    const fs::path folder = fs::path("x") / "ac\xFF";
    makeAircraft(folder, general("A320") + section(0, "title=One\natc_parking_codes=KLM"));
    ASSERT_THAT(filesIn("x"), ElementsAre("x\\ac\xEF\xBF\xBD\\aircraft.cfg"));
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
        EXPECT_THAT(filesIn("x"), ElementsAre("x\\open\\aircraft.cfg"));
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

TEST_F(GrowingFileThreads, hasAtLeastWhatWasThereAndItsReadingEnds) {
    const fs::path file = makeAircraft("x", general("A320") + section(0, "title=T0\natc_parking_codes=KLM"));
    constexpr int mostSections = 5000; // a number above 9999 is a fault
    std::atomic<int> written{1};
    std::jthread writer([&](const std::stop_token& stop) {
        std::ofstream stream(file, std::ios::binary | std::ios::app);
        for (int i = 1; i < mostSections && !stop.stop_requested(); ++i) {
            stream << section(i, "title=T" + std::to_string(i) + "\natc_parking_codes=KLM") << std::flush;
            written = i + 1;
        }
    });
    for (int round = 0; round < 20; ++round) {
        ScanState scan; // a title counts once a scan
        const auto before = static_cast<std::size_t>(written);
        const std::size_t found = lf_searchLiveriesinFile(1, scannedFile(file), scan).size();
        EXPECT_GE(found, before);
        EXPECT_LE(found, static_cast<std::size_t>(written) + 1); // the one that is just being written
        EXPECT_TRUE(eventually([&] { return written == mostSections || static_cast<std::size_t>(written) > before; }));
    }
}
