// tests/liveries/scan_progress_test.cpp
#include "liveries/scan_progress.h"

#include <chrono>

#include "tests/liveries/scan_test.h"

namespace {

class Progress : public ScanTest {
protected:
    platform::ManualClock clock_{platform::WallTime{}};
    ScanState state_;
    ScanProgress progress_{state_};
};

} // namespace

TEST_F(Progress, isShownWithinASecondWithFolderFilesAndLiveries) {
    progress_.enter("C:\\liveries\\A320");
    state_.filesRead = 12;
    state_.liveriesFound = 34;
    EXPECT_TRUE(progress_.goesOn());
    EXPECT_EQ(shownMessage(), "");
    clock_.advance(std::chrono::milliseconds(999));
    EXPECT_TRUE(progress_.goesOn());
    EXPECT_EQ(shownMessage(),
              "Scanning prioritized for liveries ... C:\\liveries\\A320: 12 files read, 34 liveries found");
}

TEST_F(Progress, isShownAgainAfterAnotherSecond) {
    clock_.advance(std::chrono::seconds(1));
    progress_.goesOn();
    state_.filesRead = 5;
    EXPECT_TRUE(progress_.goesOn());
    EXPECT_EQ(shownMessage(), "Scanning prioritized for liveries ... : 0 files read, 0 liveries found");
    clock_.advance(std::chrono::seconds(1));
    EXPECT_TRUE(progress_.goesOn());
    EXPECT_EQ(shownMessage(), "Scanning prioritized for liveries ... : 5 files read, 0 liveries found");
}

TEST_F(Progress, endsWithTheRun) {
    EXPECT_TRUE(progress_.goesOn());
    gf_stopRun(ExitReason::newSettings, 0);
    EXPECT_FALSE(progress_.goesOn());
}
