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

TEST(SiblingProgram, DISABLED_failsOnPurpose) {
    FAIL();
}

TEST(SiblingProgram, itsExitCodeIsAnswered) {
    const TemporaryFolder folder;
    EXPECT_EQ(runItself(folder.path() / "none.json", {"--gtest_filter=NoSuchTest.atAll"}), 0);
    EXPECT_EQ(runItself(folder.path() / "one.json",
                        {"--gtest_also_run_disabled_tests", "--gtest_filter=SiblingProgram.DISABLED_failsOnPurpose"}),
              1);
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
