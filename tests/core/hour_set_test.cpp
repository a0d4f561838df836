// tests/core/hour_set_test.cpp
#include "core/hour_set.h"

#include <gmock/gmock.h>

#include <initializer_list>

#include "tests/support/log_capture.h"

using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

std::vector<int> slotsOf(HourSet set) {
    std::vector<int> slots;
    for (int slot = 0; slot < HourSet::slotsPerDay; ++slot) {
        if (set.contains(slot)) {
            slots.push_back(slot);
        }
    }
    return slots;
}

struct Case {
    const char* text;
    std::vector<int> slots;
};

} // namespace

TEST(HourSet, aFreshSetIsEmptyAndKeepsWhatIsInserted) {
    HourSet set;
    EXPECT_TRUE(set.empty());

    set.insert(0);
    set.insert(47);

    EXPECT_FALSE(set.empty());
    EXPECT_THAT(slotsOf(set), ElementsAre(0, 47));
}

TEST(HourSet, aRangeIsInclusive) {
    LogCapture log;
    EXPECT_THAT(slotsOf(gf_hours2bitset("3:7")), ElementsAre(3, 4, 5, 6, 7));
    EXPECT_EQ(slotsOf(gf_hours2bitset("0:47")).size(), 48u);
    EXPECT_THAT(log.errors(), IsEmpty());
}

TEST(HourSet, aRangeFromASlotToItselfIsThatSlot) {
    LogCapture log;
    EXPECT_THAT(slotsOf(gf_hours2bitset("5:5")), ElementsAre(5));
    EXPECT_THAT(log.errors(), IsEmpty());
}

TEST(HourSet, aDescendingRangeIsEmptyAndSaysWhy) {
    LogCapture log;
    EXPECT_TRUE(gf_hours2bitset("6:5").empty());
    EXPECT_THAT(log.errors(), ElementsAre("==> gf_hours2bitset descending range not allowed (6:5 in 6:5)"));
}

TEST(HourSet, aRangeWithOnlyOnePartIsThatSlot) {
    LogCapture log;
    EXPECT_THAT(slotsOf(gf_hours2bitset("5:")), ElementsAre(5));
    EXPECT_THAT(slotsOf(gf_hours2bitset(":47")), ElementsAre(47));
    EXPECT_THAT(slotsOf(gf_hours2bitset("  : 9 ")), ElementsAre(9));
    EXPECT_THAT(log.errors(), IsEmpty());
}

TEST(HourSet, aRangeWithoutPartsIsEmptyAndSaysWhy) {
    LogCapture log;
    EXPECT_TRUE(gf_hours2bitset(":").empty());
    EXPECT_TRUE(gf_hours2bitset(" : ").empty());
    EXPECT_THAT(log.errors(), ElementsAre("==> gf_hours2bitset invalid range format in :",
                                          "==> gf_hours2bitset invalid range format in  : "));
}

TEST(HourSet, aSecondColonMakesTheSetEmptyAndSaysWhy) {
    LogCapture log;
    EXPECT_TRUE(gf_hours2bitset("1:2:3").empty());
    EXPECT_TRUE(gf_hours2bitset("1::3").empty());
    EXPECT_THAT(log.errors(), ElementsAre("==> gf_hours2bitset more than one colon char in: 1:2:3",
                                          "==> gf_hours2bitset more than one colon char in: 1::3"));
}

TEST(HourSet, aRangeWithAFaultyPartIsEmptyAndNamesEachFault) {
    LogCapture log;
    EXPECT_TRUE(gf_hours2bitset("3:48").empty());
    EXPECT_TRUE(gf_hours2bitset("x:7").empty());
    EXPECT_TRUE(gf_hours2bitset("-1:9.5").empty());
    EXPECT_TRUE(gf_hours2bitset("1,2:3").empty());
    EXPECT_THAT(log.errors(), ElementsAre("==> operator () invalid hour '48' in 3:48",    //
                                          "==> operator () invalid hour 'x' in x:7",      //
                                          "==> operator () invalid hour '-1' in -1:9.5",  //
                                          "==> operator () invalid hour '9.5' in -1:9.5", //
                                          "==> operator () invalid hour '1,2' in 1,2:3"));
}

TEST(HourSet, aListSetsEachOfItsSlots) {
    LogCapture log;
    for (const Case& list : std::initializer_list<Case>{
             {"1,4,9", {1, 4, 9}}, {"9,4,1,4", {1, 4, 9}}, {"17", {17}}, {"007", {7}}, {"0,47", {0, 47}}}) {
        EXPECT_EQ(slotsOf(gf_hours2bitset(list.text)), list.slots) << list.text;
    }
    EXPECT_THAT(log.errors(), IsEmpty());
}

TEST(HourSet, aFaultyMemberOfAListIsLeftOutAndTheOthersStand) {
    LogCapture log;
    EXPECT_THAT(slotsOf(gf_hours2bitset("1,47,48")), ElementsAre(1, 47));
    EXPECT_THAT(log.errors(), ElementsAre("==> operator () invalid hour '48' in 1,47,48"));
}

TEST(HourSet, whatIsNoWholeNumberBelow48IsNoSlot) {
    for (const char* part : {"48", "-1", "+1", "1.0", "1e1", "0x1", "1 2", "one", "1;", "99999999999999999999"}) {
        LogCapture log;
        EXPECT_THAT(slotsOf(gf_hours2bitset(std::string("2,") + part)), ElementsAre(2)) << part;
        EXPECT_THAT(log.errors(), ElementsAre("==> operator () invalid hour '" + std::string(part) + "' in 2," + part));
    }
}

TEST(HourSet, blanksRoundPartsAndEmptyPartsAreIgnored) {
    LogCapture log;
    EXPECT_THAT(slotsOf(gf_hours2bitset("  3 :\t5 ")), ElementsAre(3, 4, 5));
    EXPECT_THAT(slotsOf(gf_hours2bitset(" 1 , 4,,9 ,")), ElementsAre(1, 4, 9));
    EXPECT_THAT(log.errors(), IsEmpty());
}

TEST(HourSet, anEmptyTextIsAnEmptySetWithoutAWord) {
    LogCapture log;
    EXPECT_TRUE(gf_hours2bitset("").empty());
    EXPECT_TRUE(gf_hours2bitset("  ").empty());
    EXPECT_THAT(log.lines(), IsEmpty());
}
