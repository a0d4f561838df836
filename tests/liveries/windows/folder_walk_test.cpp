#include "liveries/folder_walk.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "tests/liveries/scan_test.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/windows/folder_link.h"

TEST(FolderLinks, oneBackToAFolderRoundItIsNotGoneInto) {
    const TemporaryFolder folder;
    writeFile("x/ac/aircraft.cfg", "");
    const Link loop("x/ac/loop", "x");
    if (!loop.isMade()) {
        GTEST_SKIP() << "no links can be made here";
    }
    std::vector<std::string> entered;
    const std::vector<std::string> files = filesToScan("x", &entered);
    EXPECT_THAT(entered, testing::ElementsAre("x", "x\\ac"));
    EXPECT_THAT(files, testing::ElementsAre("x\\ac\\aircraft.cfg"));
}
