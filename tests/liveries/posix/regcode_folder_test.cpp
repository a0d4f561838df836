// tests/liveries/posix/regcode_folder_test.cpp
// What only a machine with such links can show of the folder of the user's registrations.
#include <filesystem>

#include <gmock/gmock.h>

#include "liveries/regcode_files.h"
#include "liveries/registration_codes.h"
#include "tests/support/log_capture.h"

using testing::Contains;
using testing::IsEmpty;
using testing::StartsWith;

namespace fs = std::filesystem;

namespace {

class RegcodeFolder : public testing::Test {
protected:
    RegcodeFolder() {
        resetRegistrationCodes();
        fs::create_directories("input");
    }
    ~RegcodeFolder() override { resetRegistrationCodes(); }

    LogCapture log;
};

TEST_F(RegcodeFolder, aLinkThatLoopsOrLeadsNowhereCostsItself) {
    fs::create_directories("own");
    fs::create_symlink("a.txt", "own/a.txt");
    fs::create_symlink("nowhere", "own/b.txt");
    writeFile("own/c.txt", "One\n");
    std::vector<RegEntry> entries;
    EXPECT_TRUE(lf_readRegcodeFiles("own", entries));
    ASSERT_EQ(entries.size(), 1U);
    EXPECT_EQ(entries[0].title, "One");
    EXPECT_THAT(log.errors(), IsEmpty());
}

TEST_F(RegcodeFolder, aFolderThatCannotBeLookedAtIsTold) {
    fs::create_symlink("my_regcodes", "input/my_regcodes");
    gf_loadDontUseTitles();
    EXPECT_THAT(log.errors(), Contains(StartsWith("==> exception: ")));
    EXPECT_THAT(DontUseTitles, IsEmpty());
}

} // namespace
