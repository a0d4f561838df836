#include "platform/sibling_program.h"

#include <gmock/gmock.h>

#include <stdexcept>

#include "platform/files.h"
#include "tests/support/message_of.h"
#include "tests/support/temporary_folder.h"

namespace {

// The program beside this one is this one again.
constexpr const char* itself = "tests_platform";

TEST(SiblingProgram, DISABLED_failsOnPurpose) {
    FAIL();
}

TEST(SiblingProgram, itsExitCodeIsAnswered) {
    EXPECT_EQ(platform::runSibling(itself, {"--gtest_brief=1", "--gtest_filter=NoSuchTest.atAll"}), 0);
    EXPECT_EQ(platform::runSibling(itself, {"--gtest_brief=1", "--gtest_also_run_disabled_tests",
                                            "--gtest_filter=SiblingProgram.DISABLED_failsOnPurpose"}),
              1);
}

TEST(SiblingProgram, argumentsArriveAsTheyAre) {
    const TemporaryFolder folder;
    const std::filesystem::path report = folder.path() / "two words" / "report of tests.json";
    platform::runSibling(itself, {"--gtest_brief=1", "--gtest_filter=NoSuchTest.atAll",
                                  "--gtest_output=json:" + platform::utf8FromPath(report)});
    EXPECT_TRUE(std::filesystem::exists(report));
}

TEST(SiblingProgram, oneThatIsMissingIsNamed) {
    EXPECT_THAT(messageOf([] { platform::runSibling("no_such_program", {}); }),
                ::testing::HasSubstr("no_such_program"));
}

} // namespace
