#include "sim/user_aircraft.h"

#include <limits>

#include "core/geography.h"
#include "core/run_flags.h"
#include "sim/stand_requests.h"
#include "tests/sim/session_fixture.h"
#include "tests/support/allocation_count.h"
#include "window/window_state.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr const char* unknownSpanMessage =
    "User aircraft wing span unknown, max is taken instead, please report in my Forum!";

class UserTitle : public SessionTest {
protected:
    static void tell(std::string_view title) { dispatchAnswer(requestTitle, fieldOf(title, title.size() + 1)); }
};

TEST_F(UserTitle, isKeptShownAndLogged) {
    tell("Mooney Bravo");
    EXPECT_EQ(userTitle, "Mooney Bravo");
    EXPECT_EQ(simLampText().userTitle, "Mooney Bravo");
    EXPECT_THAT(log.lines(), ElementsAre("SimConnect: User aircraft title: Mooney Bravo"));
}

TEST_F(UserTitle, theSameOnceMoreIsNoNews) {
    tell("Mooney Bravo");
    tell("Mooney Bravo");
    EXPECT_EQ(log.lines().size(), 1U);
}

TEST_F(UserTitle, anEmptyOneIsALogLineAndTheOldOneStays) {
    tell("Mooney Bravo");
    tell("");
    EXPECT_TRUE(log.contains("! Title of your aircraft is empty?"));
    EXPECT_EQ(userTitle, "Mooney Bravo");
}

TEST_F(UserTitle, isCutAt48Characters) {
    tell(std::string(60, 'x'));
    EXPECT_EQ(userTitle, std::string(48, 'x'));
    tell(std::string(60, 'x'));
    EXPECT_EQ(log.lines().size(), 1U) << "compared as it is kept";
}

TEST_F(UserTitle, isCutBetweenCharacters) {
    std::string title;
    std::string expected;
    for (int i = 0; i < 50; ++i) {
        title += "\xC3\xA9";
        expected += i < 48 ? "\xC3\xA9" : "";
    }
    tell(title);
    EXPECT_EQ(userTitle, expected);
}

TEST_F(UserTitle, needsNoZeroAtItsEnd) {
    dispatchAnswer(requestTitle, fieldOf("ABC", 3));
    EXPECT_EQ(userTitle, "ABC");
}

TEST_F(UserTitle, inACodePageBecomesReadable) {
    tell("A\xE9ro");
    EXPECT_EQ(userTitle, "A\xC3\xA9ro");
}

class UserModel : public SessionTest {
protected:
    UserModel() {
        gHalfWingspans = {{"A320", 0.0095}, {"A321", 0.0096}, {"E190", 0.0077}, {"A388", 0.0215}, {"C172", 0.0029}};
        MaxHalfWingspan = 0.0215;
        gCategoryTypes.large = {"A320", "A321", "E190"};
        gCategoryTypes.heavy = {"A388"};
    }

    static void tell(std::string_view model) { dispatchAnswer(requestModel, fieldOf(model, 32)); }
};

TEST_F(UserModel, aKnownTypeGivesSpanAndCategory) {
    tell("A320");
    EXPECT_EQ(userHalfSpan, 0.0095);
    EXPECT_TRUE(halfSpanKnown);
    EXPECT_EQ(userCategory, AircraftCategory::Large);
    EXPECT_THAT(log.lines(), ElementsAre("model raw: A320", "SimConnect: User aircraft model: A320, half wing span: "
                                                            "17.6 meter, category: Large"));
    EXPECT_EQ(shownMessage(), "");
}

TEST_F(UserModel, anUnknownTypeGetsTheMaximum) {
    tell("XXXX");
    EXPECT_EQ(userHalfSpan, 0.0215);
    EXPECT_FALSE(halfSpanKnown);
    EXPECT_EQ(userCategory, AircraftCategory::Light);
    EXPECT_EQ(shownMessage(), unknownSpanMessage);
    EXPECT_TRUE(log.contains("SimConnect: User aircraft model: XXXX, category: Light"));
}

TEST_F(UserModel, theSpanIsTheTypesOwnAndNeverTheAverageOfItsCategory) {
    gCategoryTypes.large.insert("B738");
    gAverageHalfWingspans.fill(0.01);
    tell("B738");
    EXPECT_EQ(userHalfSpan, 0.0215);
    EXPECT_FALSE(halfSpanKnown);
    EXPECT_EQ(userCategory, AircraftCategory::Large);
}

TEST_F(UserModel, aModelOfMoreThanFourCharactersGetsTheMaximum) {
    gHalfWingspans["A3200"] = 0.0095;
    tell("A3200");
    EXPECT_EQ(userHalfSpan, 0.0215);
    EXPECT_FALSE(halfSpanKnown);
}

TEST_F(UserModel, theTypeWithTheLargestSpanIsKnownAllTheSame) {
    tell("A388");
    EXPECT_EQ(userHalfSpan, 0.0215);
    EXPECT_TRUE(halfSpanKnown);
    EXPECT_EQ(shownMessage(), "");
}

TEST_F(UserModel, aSpanThatIsNoNumberBecomesTheMaximum) {
    gHalfWingspans["B744"] = std::numeric_limits<double>::quiet_NaN();
    tell("B744");
    EXPECT_EQ(userHalfSpan, 0.0215);
    EXPECT_FALSE(halfSpanKnown);
}

TEST_F(UserModel, aLongModelWithAnAerosoftA321TitleIsAnA321) {
    userTitle = "Aerosoft A321 professional";
    tell("A321-231 IAE");
    EXPECT_EQ(userHalfSpan, 0.0096);
    EXPECT_TRUE(halfSpanKnown);
    EXPECT_EQ(userCategory, AircraftCategory::Large);
    EXPECT_THAT(log.lines(),
                ElementsAre("model raw: A321-231 IAE", "SimConnect: User aircraft model deduced from title: A321",
                            "SimConnect: User aircraft model: A321-231 IAE, half wing span: 17.8 meter, "
                            "category: Large"));
}

TEST_F(UserModel, eachAerosoftTitleHasItsModel) {
    gHalfWingspans["A319"] = 0.0094;
    for (const auto& [title, span] : std::vector<std::pair<std::string, double>>{
             {"Aerosoft A319", 0.0094}, {"Aerosoft A320", 0.0095}, {"Aerosoft A321", 0.0096}}) {
        userTitle = title;
        tell("unknown");
        EXPECT_EQ(userHalfSpan, span) << title;
        EXPECT_TRUE(halfSpanKnown) << title;
    }
    userTitle = "Aerosoft A32";
    tell("unknown");
    EXPECT_FALSE(halfSpanKnown);
}

TEST_F(UserModel, theTitleDoesNotCountForAKnownType) {
    userTitle = "Aerosoft A321";
    tell("C172");
    EXPECT_EQ(userHalfSpan, 0.0029);
}

TEST_F(UserModel, aDeducedTypeWithoutASpanGetsTheMaximum) {
    gHalfWingspans.erase("A321");
    userTitle = "Aerosoft A321";
    tell("unknown");
    EXPECT_EQ(userHalfSpan, 0.0215);
    EXPECT_FALSE(halfSpanKnown);
    EXPECT_EQ(shownMessage(), unknownSpanMessage);
}

TEST_F(UserModel, aCameraOrABoatHasTheSpanOfAnE190) {
    for (const char* const model : {"my camerapod 2", "Crew Vessel X"}) {
        userHalfSpan = 0;
        halfSpanKnown = false;
        userCategory = AircraftCategory::Heavy;
        tell(model);
        EXPECT_EQ(userHalfSpan, 0.0077) << model;
        EXPECT_TRUE(halfSpanKnown) << model;
        EXPECT_EQ(userCategory, AircraftCategory::Light) << model;
        EXPECT_TRUE(log.contains(std::string("SimConnect: User aircraft model: ") + model));
    }
    EXPECT_EQ(shownMessage(), "");
}

TEST_F(UserModel, anEmptyOneIsError71) {
    EXPECT_EQ(
        userErrorOf([] { tell(""); }),
        (std::pair<int, std::string>(71, "atc_model= in [General] section of your aircraft.cfg is empty or missing")));
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(UserModel, anythingElseThatGoesWrongIsError73) {
    const std::string model(5000, 'X');
    EXPECT_EQ(userErrorOf([&model] {
                  const FailingAllocation noMemoryForItsText(model.size());
                  onUserModel(model);
              }),
              (std::pair<int, std::string>(73, "It looks like you have not selected an aircraft as user vehicle")));
}

class UserOnGround : public SessionTest {
protected:
    static void tell(std::int64_t value) { dispatchAnswer(requestOnGround, dataOf(value)); }
};

TEST_F(UserOnGround, beforeAnyPositionOnlyTheSecondCounts) {
    tell(1);
    EXPECT_FALSE(userOnGroundKnown);
    EXPECT_FALSE(userOnGround);
    EXPECT_TRUE(secondPulse);
}

TEST_F(UserOnGround, isKnownOnceThereIsAPosition) {
    placeUser(atParis());
    tell(1);
    EXPECT_TRUE(userOnGroundKnown);
    EXPECT_TRUE(userOnGround);
    EXPECT_TRUE(secondPulse);
    tell(0);
    EXPECT_FALSE(userOnGround);
    EXPECT_TRUE(userOnGroundKnown);
}

class UserPosition : public SessionTest {
protected:
    static void moveTo(const LatLon& position) {
        UserState state = atParis();
        state.lat = position.lat;
        state.lon = position.lon;
        placeUser(state);
    }

    static LatLon eastOfParis(double nm) {
        constexpr double east = 1.5707963267948966;
        return project({atParis().lat, atParis().lon}, east, nm * feetPerNm);
    }
};

TEST_F(UserPosition, isKeptWithTheObjectId) {
    placeUser(atParis(), 17);
    EXPECT_EQ(userStateNow(), atParis());
    EXPECT_EQ(userObjectId, 17U);
    EXPECT_EQ(gUserState, UserState()) << "the run takes its copy itself";
}

TEST_F(UserPosition, isNotBelowTheGround) {
    UserState state = atParis();
    state.altAboveGround = -0.4;
    placeUser(state);
    EXPECT_EQ(userStateNow().altAboveGround, 0);
}

TEST_F(UserPosition, asksForTheStandThere) {
    EXPECT_FALSE(takeUserStandRequest());
    placeUser(atParis());
    EXPECT_TRUE(takeUserStandRequest());
}

TEST_F(UserPosition, aJumpOf10AndAHalfMilesIsANewFlight) {
    placeUser(atParis());
    moveTo(eastOfParis(10.5));
    EXPECT_TRUE(stopsForNewFlight());
    EXPECT_TRUE(log.contains("Teleport"));
}

TEST_F(UserPosition, aJumpOf9AndAHalfMilesIsNone) {
    placeUser(atParis());
    moveTo(eastOfParis(9.5));
    EXPECT_FALSE(gStopRun);
    EXPECT_FALSE(log.contains("Teleport"));
}

TEST_F(UserPosition, eachMoveCountsFromTheLastPosition) {
    placeUser(atParis());
    moveTo(eastOfParis(9));
    moveTo(eastOfParis(18));
    EXPECT_FALSE(gStopRun);
}

TEST_F(UserPosition, neitherFromNorToNowhereIsAJump) {
    moveTo({0, 0});
    placeUser(atParis());
    EXPECT_FALSE(gStopRun);
    moveTo({0.0001, 0.0001});
    EXPECT_FALSE(gStopRun);
}

TEST_F(UserPosition, aJumpDuringAnExitLeavesItsReason) {
    gf_stopRun(ExitReason::readerError, 15);
    placeUser(atParis());
    moveTo(eastOfParis(100));
    EXPECT_EQ(gf_exitReason(), ExitReason::readerError);
}

TEST_F(UserPosition, theSimulatorsTimeIsKeptWhileTheFeedIsOfAnotherTime) {
    UserState state = atParis();
    state.zuluYear = 2022;
    state.zuluDayOfYear = 301;
    state.zuluSeconds = 60;
    placeUser(state);
    EXPECT_EQ(simSeconds, 0U);
    gRealTrafficHistoric = true;
    placeUser(state);
    EXPECT_EQ(simSeconds, 1666915260U);
}

} // namespace
