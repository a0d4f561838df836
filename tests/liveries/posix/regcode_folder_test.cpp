// tests/liveries/posix/regcode_folder_test.cpp
// What only a machine with such links can show of the folder of the user's registrations.
#include <filesystem>
#include <optional>
#include <string>
#include <system_error>
#include <unistd.h>
#include <utility>
#include <vector>

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

constexpr fs::perms toRead = fs::perms::group_read | fs::perms::others_read;

/// To the superuser nothing is closed; any other user is an ordinary one already.
class Ordinary {
public:
    /// The folder is one that he may look at, whatever rights new folders have here. He keeps the superuser's group.
    explicit Ordinary(const fs::path& folder) {
        fs::permissions(fs::current_path(), fs::perms::group_exec | fs::perms::others_exec, fs::perm_options::add);
        fs::permissions(folder, fs::perms::group_exec | fs::perms::others_exec | toRead, fs::perm_options::add);
        user_.emplace();
    }
    static bool isOne() { return geteuid() != 0; }

private:
    std::optional<OtherUser> user_;
};

/// A file or a folder that nobody may open while this lives.
class Closed {
public:
    explicit Closed(fs::path path) : path_(std::move(path)), rights_(fs::status(path_).permissions()) {
        fs::permissions(path_, fs::perms::none);
    }
    ~Closed() {
        std::error_code ignored;
        fs::permissions(path_, rights_, ignored);
    }
    Closed(const Closed&) = delete;
    Closed& operator=(const Closed&) = delete;

private:
    fs::path path_;
    fs::perms rights_;
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
    {
        const Closed folder("input/my_regcodes");
        const Ordinary user("input");
        if (!Ordinary::isOne()) {
            GTEST_SKIP() << "this process cannot become another user";
        }
        gf_processOfflineRegcodes();
    }
    EXPECT_THAT(log.lines(), Contains(AllOf(StartsWith("Error reading regcode files in input/my_regcodes, what: "),
                                            HasSubstr("Permission denied"))));
    EXPECT_THAT(shownMessage(), StartsWith("There were errors processing the regcode files in folder"));
}

TEST_F(RegcodeFolder, aFileThatCannotBeOpenedIsNamedWithTheReasonAndTheOthersAreRead) {
    writeFile("own/a.txt", "One\n");
    writeFile("own/b.txt", "Two\n");
    fs::permissions("own/b.txt", toRead, fs::perm_options::add);
    std::vector<RegEntry> entries;
    {
        const Closed file("own/a.txt");
        const Ordinary user("own");
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
