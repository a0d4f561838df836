#include "liveries/failed_titles.h"

#include <gmock/gmock.h>

#include <fmt/format.h>

#include "core/exit_reason.h"
#include "core/user_error.h"
#include "tests/support/log_capture.h"
#include "window/window_state.h"

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

namespace {

class FailedTitlesTest : public testing::Test {
protected:
    FailedTitlesTest() { reset(); }
    ~FailedTitlesTest() override { reset(); }

    static void reset() {
        resetFailedTitles();
        resetWindowState();
        gf_resetExitReason();
    }

    static AircraftRecord refused(std::string_view title, const char* model = "A320", const char* airline = "SWR") {
        AircraftRecord aircraft;
        aircraft.callsign = "SWR12";
        aircraft.liveryTitle = title;
        aircraft.model = model;
        aircraft.airline = airline;
        return aircraft;
    }

    static void refuse(int titles) {
        for (int i = 1; i <= titles; ++i) {
            gf_noteFailedTitle(refused(fmt::format("Livery {}", i)));
        }
    }

    LogCapture log;
};

TEST_F(FailedTitlesTest, theUserIsToldAndTitleAndCombinationAreKept) {
    gf_noteFailedTitle(refused("FSX A320 Swiss"));
    EXPECT_EQ(shownMessage(), "SWR12 'FSX A320 Swiss' could not be created by your Sim!");
    EXPECT_THAT(log.lines(), ElementsAre("SWR12 'FSX A320 Swiss' could not be created by your Sim!"));
    EXPECT_THAT(FailedTitles, ElementsAre("FSX A320 Swiss"));
    EXPECT_THAT(NoCreateList, ElementsAre("A320 SWR"));
}

TEST_F(FailedTitlesTest, aTitleIsFoundByAView) {
    gf_noteFailedTitle(refused("FSX A320 Swiss"));
    EXPECT_TRUE(FailedTitles.contains(std::string_view("FSX A320 Swiss")));
    EXPECT_FALSE(FailedTitles.contains(std::string_view("FSX A320")));
}

TEST_F(FailedTitlesTest, whatIsRefusedAgainCountsOnce) {
    gf_noteFailedTitle(refused("One"));
    gf_noteFailedTitle(refused("One", "A321"));
    gf_noteFailedTitle(refused("Two"));
    EXPECT_THAT(FailedTitles, UnorderedElementsAre("One", "Two"));
    EXPECT_THAT(NoCreateList, UnorderedElementsAre("A320 SWR", "A321 SWR"));
}

TEST_F(FailedTitlesTest, theTwentiethTitleIsOneTooManyAlsoWhileTheRunStops) {
    refuse(19);
    gf_stopRun(ExitReason::newSettings, 0);
    EXPECT_THROW(refuse(20), kvd::UserErrorException);
}

TEST_F(FailedTitlesTest, onceTheRunStopsOrTheUserClosesATitleIsKeptButNobodyTold) {
    gf_stopRun(ExitReason::newFlight, 0);
    gf_noteFailedTitle(refused("One"));
    gf_resetExitReason();
    gf_userCloses();
    gf_noteFailedTitle(refused("Two", "A321"));
    EXPECT_EQ(shownMessage(), "");
    EXPECT_THAT(log.lines(), IsEmpty());
    EXPECT_THAT(FailedTitles, UnorderedElementsAre("One", "Two"));
    EXPECT_THAT(NoCreateList, UnorderedElementsAre("A320 SWR", "A321 SWR"));
}

TEST_F(FailedTitlesTest, nineteenRefusedTitlesDoNotEndTheProgram) {
    EXPECT_NO_THROW(refuse(19));
    EXPECT_EQ(FailedTitles.size(), 19U);
}

TEST_F(FailedTitlesTest, twentyRefusedTitlesEndTheProgramWithError81) {
    try {
        refuse(20);
        FAIL() << "no error";
    } catch (const kvd::UserErrorException& error) {
        EXPECT_EQ(error.code(), 81);
        EXPECT_STREQ(error.what(), "There are too many liveries that could not be created!, see Log.txt");
    }
    EXPECT_EQ(shownMessage(), "There are too many liveries that could not be created!");
    const std::vector<std::string> lines = log.lines();
    ASSERT_EQ(lines.size(), 20U + 3);
    EXPECT_EQ(lines[19], "SWR12 'Livery 20' could not be created by your Sim!");
    EXPECT_EQ(lines[20], "");
    EXPECT_EQ(lines[21], "===> Error 81, There are too many liveries that could not be created!");
    EXPECT_EQ(lines[22], "");
}

TEST_F(FailedTitlesTest, oneTitleTwentyTimesIsNotTwentyTitles) {
    for (int i = 0; i < 20; ++i) {
        EXPECT_NO_THROW(gf_noteFailedTitle(refused("One")));
    }
}

} // namespace
