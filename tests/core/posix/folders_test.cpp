// tests/core/posix/folders_test.cpp
// What needs the window system in memory, or failures that only this system can be brought to.
#include "core/folders.h"

#include <gmock/gmock.h>

#include "core/parameter_file.h"
#include "platform/posix/memory_window.h"
#include "tests/support/log_capture.h"
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

} // namespace

TEST(ClearingFolders, aFileThatCannotBeRemovedIsAnErrorLineAndTheWalkGoesOn) {
    // Files that not even the administrator can remove: the system's own account of the open ones.
    const LogCapture log;

    gf_removeFilesFromDirectory("/proc/self/fdinfo");

    const std::vector<std::string> errors = log.errors();
    EXPECT_GE(errors.size(), 3u);
    for (const std::string& line : errors) {
        EXPECT_THAT(line, MatchesRegex("==> Failed to remove /proc/self/fdinfo/[0-9]+ \\(.+\\)"));
    }
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
