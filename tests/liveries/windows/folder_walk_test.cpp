#include "liveries/folder_walk.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>

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
    std::vector<std::string> files;
    walkFolder(
        "x",
        [&entered](std::string_view inner) {
            entered.emplace_back(inner);
            return true;
        },
        [&files](const ScannedFile& file) {
            files.push_back(file.text);
            return true;
        });
    EXPECT_THAT(entered, testing::ElementsAre("x", "x\\ac"));
    EXPECT_THAT(files, testing::ElementsAre("x\\ac\\aircraft.cfg"));
}
