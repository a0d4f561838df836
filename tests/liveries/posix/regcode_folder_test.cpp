// tests/liveries/posix/regcode_folder_test.cpp
// What only a machine with such links can show of the folder of the user's registrations.
#include <filesystem>
#include <optional>
#include <unistd.h>

#include <gmock/gmock.h>

#include "liveries/regcode_files.h"
#include "liveries/registration_codes.h"
#include "tests/support/log_capture.h"
#include "tests/support/posix/other_user.h"
#include "window/window_state.h"

using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

namespace fs = std::filesystem;

namespace {

/// To the superuser nothing is closed; any other user is an ordinary one already.
class Ordinary {
public:
    Ordinary() {
        // He gets as far as the folder of the test.
        fs::permissions(fs::current_path(), fs::perms::others_exec, fs::perm_options::add);
        user_.emplace();
    }
    static bool isOne() { return geteuid() != 0; }

private:
    std::optional<OtherUser> user_;
};

class RegcodeFolder : public testing::Test {
public:
    RegcodeFolder(const RegcodeFolder&) = delete;
    RegcodeFolder& operator=(const RegcodeFolder&) = delete;
    ~RegcodeFolder() override { reset(); }

protected:
    RegcodeFolder() {
        reset();
        fs::create_directories("input");
    }

    static void reset() {
        resetRegistrationCodes();
        resetWindowState();
    }

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
    EXPECT_THAT(log.lines(), Contains(StartsWith("Error reading regcode files in input/my_regcodes, what: ")));
    EXPECT_THAT(OfflineReport, SizeIs(1));
    EXPECT_THAT(DontUseTitles, IsEmpty());
}

TEST_F(RegcodeFolder, aFolderThatIsClosedToTheUserIsTold) {
    writeFile("input/my_regcodes/a.txt", "One\n");
    fs::permissions("input/my_regcodes", fs::perms::none);
    {
        const Ordinary user;
        if (!Ordinary::isOne()) {
            GTEST_SKIP() << "this process cannot become another user";
        }
        gf_processOfflineRegcodes();
    }
    fs::permissions("input/my_regcodes", fs::perms::owner_all);
    EXPECT_THAT(log.lines(), Contains(AllOf(StartsWith("Error reading regcode files in input/my_regcodes, what: "),
                                            HasSubstr("Permission denied"))));
    EXPECT_THAT(shownMessage(), StartsWith("There were errors processing the regcode files in folder"));
}

TEST_F(RegcodeFolder, aFileThatCannotBeOpenedIsNamedWithTheReasonAndTheOthersAreRead) {
    writeFile("own/a.txt", "One\n");
    writeFile("own/b.txt", "Two\n");
    fs::permissions("own/a.txt", fs::perms::none);
    std::vector<RegEntry> entries;
    {
        const Ordinary user;
        if (!Ordinary::isOne()) {
            GTEST_SKIP() << "this process cannot become another user";
        }
        EXPECT_FALSE(lf_readRegcodeFiles("own", entries));
    }
    ASSERT_EQ(entries.size(), 1U);
    EXPECT_EQ(entries[0].title, "Two");
    EXPECT_THAT(log.errors(), ElementsAre("==> Read failed for 'own/a.txt': Permission denied"));
}

TEST_F(RegcodeFolder, aFileWhoseNameIsNoTextIsReadAndNamedAsFarAsItCanBe) {
    writeFile(fs::path("own") / "\xFF.txt", "One;AB\nTwo\n");
    std::vector<RegEntry> entries;
    EXPECT_TRUE(lf_readRegcodeFiles("own", entries));
    ASSERT_EQ(entries.size(), 1U);
    EXPECT_EQ(entries[0].title, "Two");
    EXPECT_TRUE(log.contains("Processing regcodes file 'own/\xEF\xBF\xBD.txt'"));
    EXPECT_THAT(log.errors(), ElementsAre("==> wrong regcode length 'AB' in \xEF\xBF\xBD.txt"));
}

} // namespace
