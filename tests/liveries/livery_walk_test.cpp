#include "liveries/livery_walk.h"

#include "platform/clock.h"
#include "tests/liveries/held_task.h"
#include "tests/liveries/scan_test.h"
#include "tests/support/allocation_count.h"

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;
using testing::UnorderedElementsAre;

namespace {

/// Once a task is held each look at whether to go on takes a second.
class LiveryWalkThreads : public ScanTest {
protected:
    static void makeLivery(const std::filesystem::path& folder, const std::string& title) {
        makeAircraft(folder, general("A320") + section(0, "title=" + title + "\natc_parking_codes=KLM"));
    }
    void walk(const std::filesystem::path& folder) { lf_walkFolder(1, folder, {state_, progress_, tasks_}); }
    bool goesOn() {
        if (isHeld_) {
            clock_.advance(std::chrono::seconds(1));
        } else if (holdsOnceAFileIsRead_ && state_->filesRead > 0) {
            isHeld_ = true;
            EXPECT_TRUE(tasks_.start(held_.task()));
        }
        return progress_.goesOn();
    }

    void holdNothingMore() { holdsOnceAFileIsRead_ = isHeld_ = false; }

    platform::ManualClock clock_{platform::WallTime{}};
    std::shared_ptr<ScanState> state_ = std::make_shared<ScanState>();
    ScanProgress progress_{*state_};
    bool holdsOnceAFileIsRead_ = false;
    bool isHeld_ = false;
    HeldTask held_; // outlives the tasks, whose threads its end waits for
    ScanTasks tasks_{2, [this] { return goesOn(); }};
};

/// Without the thread sanitizer, which does not see how the library counts who holds an exception.
class FailingLiveryWalk : public LiveryWalkThreads {};

/// Without threads.
class LiveryTask : public LiveryWalkThreads {};

platform::SteadyTime inAnHour() {
    return platform::steadyNow() + std::chrono::hours(1);
}

std::vector<std::string> textsOf(const std::vector<FolderToScan>& folders) {
    std::vector<std::string> texts;
    for (const FolderToScan& folder : folders) {
        texts.push_back(folder.text);
    }
    return texts;
}

} // namespace

TEST_F(LiveryWalkThreads, collectsWhatTheFilesHold) {
    for (const char* title : {"1", "2", "3", "4", "5"}) {
        makeLivery(std::filesystem::path("x") / title, title);
    }
    walk("x");
    EXPECT_THAT(titlesOf(Liveries), UnorderedElementsAre("1", "2", "3", "4", "5"));
    EXPECT_THAT(log_.lines(), IsEmpty());
}

TEST_F(LiveryWalkThreads, aFileThatTakesTooLongDuringTheWalkEndsTheFolderAlone) {
    constexpr int moreThanAreHandedOutAhead = 300;
    for (int i = 0; i < moreThanAreHandedOutAhead; ++i) {
        makeLivery(std::filesystem::path("x") / std::to_string(i), std::to_string(i));
    }
    makeLivery("y/ac", "next");
    holdsOnceAFileIsRead_ = true;
    walk("x");
    EXPECT_THAT(log_.lines(), ElementsAre("liveries inner search aborted: Future wait timed out after 10 seconds",
                                          StartsWith("  left out is what was not finished from x\\")));
    EXPECT_THAT(Liveries, Not(IsEmpty())) << "what was read by then";
    EXPECT_LT(Liveries.size(), static_cast<std::size_t>(moreThanAreHandedOutAhead));
    holdNothingMore();
    walk("y");
    EXPECT_EQ(titlesOf(Liveries).back(), "next");
}

TEST_F(LiveryWalkThreads, aFileThatTakesTooLongAfterTheWalkEndsTheFolderAlone) {
    makeLivery("x/ac", "read");
    makeLivery("y/ac", "next");
    holdsOnceAFileIsRead_ = true;
    walk("x");
    EXPECT_THAT(log_.lines(), ElementsAre("liveries search aborted, futs outer, Future wait timed out after 10 seconds",
                                          StartsWith("  left out is what was not finished from x\\")));
    holdNothingMore();
    walk("y");
    EXPECT_THAT(titlesOf(Liveries), ElementsAre("read", "next"));
}

TEST_F(FailingLiveryWalk, aFolderThatCannotBeOpenedSaysWhy) {
    walk("gone");
    EXPECT_THAT(log_.lines(), ElementsAre(StartsWith("liveries search in gone aborted, cause: ")));
}

TEST_F(LiveryWalkThreads, aStopEndsTheFolderWithoutAWord) {
    makeLivery("x/ac", "never");
    gf_userCloses();
    walk("x");
    EXPECT_THAT(Liveries, IsEmpty());
    EXPECT_THAT(log_.lines(), IsEmpty());
}

TEST_F(LiveryWalkThreads, foldersInsideFoldersAreSearchedToTheLast) {
    std::vector<std::string> titles;
    std::filesystem::path folder = "x";
    for (int depth = 0; depth < 12; ++depth) {
        folder /= "d";
        for (int i = 0; i < 3; ++i) {
            titles.push_back(std::to_string(depth) + "." + std::to_string(i));
            makeLivery(folder / titles.back(), titles.back());
        }
    }
    walk("x");
    EXPECT_THAT(titlesOf(Liveries), testing::UnorderedElementsAreArray(titles));
    EXPECT_THAT(log_.lines(), IsEmpty());
}

TEST_F(LiveryWalkThreads, theFirstFolderItselfMayHoldAnAircraft) {
    makeLivery("x", "outermost");
    makeLivery("x/inner", "inner");
    walk("x");
    EXPECT_THAT(titlesOf(Liveries), ElementsAre("outermost", "inner"));
}

TEST_F(LiveryWalkThreads, ofATitleInManyFilesOneStandsAndTheOthersAreReported) {
    constexpr std::size_t files = 200;
    for (std::size_t i = 0; i < files; ++i) {
        makeLivery(std::filesystem::path("x") / std::to_string(i), "the same");
    }
    walk("x");
    EXPECT_THAT(titlesOf(Liveries), ElementsAre("the same"));
    EXPECT_EQ(state_->reports.lines(ScanReport::incompleteSections).size(), files - 1);
    EXPECT_EQ(state_->filesRead, static_cast<int>(files));
}

TEST_F(LiveryTask, aFolderThatFailsCostsItself) {
    const std::string longName(200, 'a');
    makeLivery("x/" + longName, "lost");
    makeLivery("y/ac", "read");
    const std::vector<FolderToScan> folders{rootToScan("x"), rootToScan("y")};
    const FailingAllocation noMemoryForThePath(longName.size());
    const FolderFinds finds = lf_searchFolders(1, folders, *state_, inAnHour());
    EXPECT_THAT(textsOf(finds.folders), ElementsAre("y\\ac"));
    EXPECT_THAT(log_.lines(), ElementsAre(StartsWith("liveries inner search aborted: ")));
}

TEST_F(LiveryTask, foldersThatATaskHasNoTimeForAreGivenBack) {
    makeLivery("x", "left");
    const std::vector<FolderToScan> folders{rootToScan("x"), rootToScan(".")};
    const FolderFinds finds = lf_searchFolders(1, folders, *state_, platform::steadyNow());
    EXPECT_THAT(finds.liveries, IsEmpty());
    EXPECT_THAT(textsOf(finds.folders), ElementsAre("x", "."));
}

TEST_F(LiveryTask, foldersOfAScanThatStopsAreGivenBack) {
    makeLivery("x", "left");
    gf_userCloses();
    const FolderFinds finds = lf_searchFolders(1, {rootToScan("x")}, *state_, inAnHour());
    EXPECT_THAT(finds.liveries, IsEmpty());
    EXPECT_THAT(textsOf(finds.folders), ElementsAre("x"));
}
