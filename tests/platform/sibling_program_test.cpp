#include "platform/sibling_program.h"

#include <gmock/gmock.h>

#include <stdexcept>

#include "platform/files.h"
#include "tests/support/message_of.h"
#include "tests/support/temporary_folder.h"

namespace {

// The program beside this one is this one again.
constexpr const char* itself = "tests_platform";

/// Its report goes where this program's own would not.
int runItself(const std::filesystem::path& report, std::vector<std::string> arguments) {
    arguments.emplace_back("--gtest_brief=1");
    arguments.push_back("--gtest_output=json:" + platform::utf8FromPath(report));
    return platform::runSibling(itself, arguments);
}

/// What the sibling runs: it fails where it is asked to.
TEST(SiblingProgramChild, finishesWell) {
    EXPECT_FALSE(std::filesystem::exists("fail_on_purpose"));
}

TEST(SiblingProgram, itsExitCodeIsAnswered) {
    const TemporaryFolder folder;
    const std::vector<std::string> child{"--gtest_filter=SiblingProgramChild.finishesWell"};
    EXPECT_EQ(runItself("good.json", child), 0);
    writeFile("fail_on_purpose", "");
    EXPECT_EQ(runItself("bad.json", child), 1);
}

TEST(SiblingProgram, argumentsArriveAsTheyAre) {
    const TemporaryFolder folder;
    const std::filesystem::path report = folder.path() / "two words" / "report of tests.json";
    runItself(report, {"--gtest_filter=NoSuchTest.atAll"});
    EXPECT_TRUE(std::filesystem::exists(report));
}

TEST(SiblingProgram, oneThatIsMissingIsNamed) {
    EXPECT_THAT(messageOf([] { platform::runSibling("no_such_program", {}); }),
                ::testing::HasSubstr("no_such_program"));
}

} // namespace
