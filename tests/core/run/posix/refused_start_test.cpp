#include <gtest/gtest.h>

#include "platform/posix/memory_window.h"
#include "tests/support/program_run.h"

namespace memory = window_system::memory;

namespace {

class RefusedStart : public testing::Test {
protected:
    RefusedStart() { memory::reset(); }
    ~RefusedStart() override { memory::reset(); }

    /// The log of a start that the window system refuses.
    std::string logOfTheStart() {
        run.start();
        EXPECT_TRUE(run.ends());
        EXPECT_EQ(run.quitCode(), 0);
        EXPECT_FALSE(memory::windowExists());
        return run.log();
    }

    ProgramRun run;
};

TEST_F(RefusedStart, withoutATitleTheProgramEndsWithAWord) {
    memory::refuseResourceStrings(true);
    EXPECT_NE(logOfTheStart().find("\nFailed to load application title\n"), std::string::npos);
}

TEST_F(RefusedStart, withoutAWindowClassTheProgramEndsWithAWord) {
    memory::refuseWindowClass(true);
    EXPECT_NE(logOfTheStart().find("\nFailed to register window class\n"), std::string::npos);
}

TEST_F(RefusedStart, withoutAWindowTheProgramEndsWithAnErrorLine) {
    memory::refuseWindow(true);
    EXPECT_NE(logOfTheStart().find("\n==> initInstance failed\n"), std::string::npos);
}

TEST(TopMost, theWindowIsSetTopMostAsTheParameterSays) {
    for (const bool wanted : {true, false}) {
        memory::reset();
        ProgramRun run;
        run.setParameters({{"SIM_INSTALL_PATH", "P3D v5"}, {"ALWAYS_ON_TOP", wanted ? "true" : "false"}});
        run.start();
        ASSERT_TRUE(run.willLog("Waiting for Prepar3Dv5 ..."));
        EXPECT_EQ(memory::isTopMost(), wanted);
    }
    memory::reset();
}

} // namespace
