// tests/core/posix/folders_test.cpp
// What needs the window system in memory, or failures that only this system can be brought to.
#include "core/folders.h"

#include <gmock/gmock.h>

#include <sys/wait.h>
#include <unistd.h>

#include <fmt/format.h>

#include "core/parameter_file.h"
#include "platform/posix/memory_window.h"
#include "tests/support/log_capture.h"
#include "tests/support/posix/other_user.h"
#include "tests/support/temporary_folder.h"

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::MatchesRegex;
using ::testing::StartsWith;
namespace fs = std::filesystem;

namespace {

class OpeningForTheUser : public ::testing::Test {
protected:
    OpeningForTheUser() { window_system::memory::reset(); }
    ~OpeningForTheUser() override { window_system::memory::reset(); }

    TemporaryFolder folder_;
};

enum class Answer { no, yes, refused };

/// The write test of a folder in a child process to which the working directory is the root.
Answer writableUnderThisRoot(const fs::path& folder) {
    const pid_t child = fork();
    if (child == 0) {
        Answer answer = Answer::refused;
        if (chroot(".") == 0) {
            answer = isWritableFolder(folder) ? Answer::yes : Answer::no;
        }
        _exit(static_cast<int>(answer));
    }
    int status = 0;
    waitpid(child, &status, 0);
    return static_cast<Answer>(WEXITSTATUS(status));
}

} // namespace

TEST(ClearingFolders, aFileThatCannotBeRemovedIsAnErrorLineAndTheWalkGoesOn) {
    // Files that not even the administrator can remove: the system's own account of the open ones.
    const LogCapture log;

    gf_removeFilesFromDirectory("/proc/self/fdinfo");

    const std::vector<std::string> errors = log.errors();
    EXPECT_GE(errors.size(), 3u);
    for (const std::string& line : errors) {
        EXPECT_THAT(line, MatchesRegex("==> Failed to remove \\\\proc\\\\self\\\\fdinfo\\\\[0-9]+ \\(.+\\)"));
    }
}

TEST(ClearingFolders, whatCanBeRemovedGoesThoughOtherFilesStay) {
    const LogCapture log;
    constexpr int each = 10; // in whatever order the system lists them, some that go come after some that stay
    fs::create_directory("shared");
    for (int i = 0; i < each; ++i) {
        writeFile(fmt::format("shared/{}.foreign", i), "");
        writeFile(fmt::format("shared/{}.own", i), "");
        if (!OtherUser::own(fmt::format("shared/{}.own", i))) {
            GTEST_SKIP() << "this process cannot give files to another user";
        }
    }
    // In a folder with this bit each user removes only what is his.
    fs::permissions("shared", fs::perms::all | fs::perms::sticky_bit);
    {
        const OtherUser user;
        if (!user.became()) {
            GTEST_SKIP() << "this process cannot become another user";
        }
        gf_removeFilesFromDirectory("shared");
    }
    for (int i = 0; i < each; ++i) {
        EXPECT_FALSE(fs::exists(fmt::format("shared/{}.own", i))) << i;
        EXPECT_TRUE(fs::exists(fmt::format("shared/{}.foreign", i))) << i;
    }
    EXPECT_EQ(log.errors().size(), static_cast<std::size_t>(each));
}

TEST(WriteTest, aFolderThatRefusesFilesIsNotWritable) {
    ASSERT_TRUE(fs::is_directory("/proc"));
    EXPECT_FALSE(isWritableFolder("/proc"));
}

// Under a root of its own the program-files folders, and their neighbours, are the test's.
TEST(WriteTest, programFilesFoldersAreKnownByTheirWholeNameInWhateverCase) {
    const TemporaryFolder folder;
    for (const char* name : {"opt", "OPT/Program", "optional", "home/opt"}) {
        fs::create_directories(name);
    }
    if (writableUnderThisRoot("/") == Answer::refused) {
        GTEST_SKIP() << "this process cannot have another root folder";
    }
    EXPECT_EQ(writableUnderThisRoot("/opt"), Answer::no);
    EXPECT_EQ(writableUnderThisRoot("/OPT/Program"), Answer::no);
    EXPECT_EQ(writableUnderThisRoot("/optional"), Answer::yes);
    EXPECT_EQ(writableUnderThisRoot("/home/opt"), Answer::yes);
}

TEST(CheckedFileCalls, throwTheSystemsErrorWithTheOperationsName) {
    const std::string impossible(5000, 'x');
    const auto expectFailure = [](auto call, const std::string& operation) {
        try {
            call();
            ADD_FAILURE() << operation << " does not throw";
        } catch (const fs::filesystem_error& error) {
            EXPECT_THAT(error.what(), StartsWith("filesystem error: " + operation + ": "));
            EXPECT_EQ(error.code(), std::errc::filename_too_long);
        }
    };
    expectFailure([&] { fileStatus(impossible); }, "status");
    expectFailure([&] { fileExists(impossible); }, "exists");
    expectFailure([&] { removeFile(impossible); }, "remove");
    expectFailure([&] { createFolders(impossible); }, "create_directories");
}

TEST_F(OpeningForTheUser, aParameterFolderThatDoesNotOpenIsAMessageBox) {
    gf_openParameterFolder();
    EXPECT_THAT(window_system::memory::messageBoxes(), ElementsAre("Could not open folder with parameters.xml"));
}

TEST_F(OpeningForTheUser, aManualThatDoesNotOpenIsAMessageBox) {
    gf_openManual();
    EXPECT_THAT(window_system::memory::messageBoxes(), ElementsAre("Could not open local folder with Manual"));
}

TEST_F(OpeningForTheUser, whatOpensIsNoMessage) {
    fs::create_directories(gf_parameterFolder());
    writeFile("docs/Manual.pdf", "");
    gf_openParameterFolder();
    gf_openManual();
    EXPECT_THAT(window_system::memory::messageBoxes(), IsEmpty());
}
