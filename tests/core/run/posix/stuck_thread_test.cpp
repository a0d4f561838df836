// The end of a process one of whose threads does not come out. It ends without the tests' own end, so it is a process
// of its own.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <thread>

#include "core/detached_threads.h"
#include "core/run/process_entry.h"
#include "tests/support/program_run.h"

namespace {

constexpr int whatAnOrdinaryEndWouldGive = 99;

void runWithAThreadThatStaysIn() {
    gf_startDetached("Stays in", [] { std::this_thread::sleep_for(std::chrono::hours(1)); });
    gf_processEntry({"Tarnwing_P3D", "--production"});
    std::_Exit(whatAnOrdinaryEndWouldGive);
}

TEST(StuckThread, isToldAndTheProcessEndsWithItsCodeAllTheSame) {
    const ProgramRun folder;
    EXPECT_EXIT(runWithAThreadThatStaysIn(), testing::ExitedWithCode(0), "");
    EXPECT_TRUE(folder.logs("\n==> A thread did not end in time\n")) << folder.log();
}

} // namespace
