// tests/liveries/reference_tables_test.cpp
#include "liveries/reference_tables.h"

#include <gmock/gmock.h>
#include <map>
#include <random>
#include <string>

using testing::ElementsAre;

namespace {

class ReferenceTables : public testing::Test {
protected:
    ReferenceTables() { resetReferenceTables(); }
    ~ReferenceTables() override { resetReferenceTables(); }

    static void addRegistration(std::string_view reg, std::string_view airline = "KLM") {
        DbaseTable.insert(reg, {airline, {}, {}, false});
    }
};

} // namespace

TEST(RegcodeVariants, hyphenateAfterTheSecondThenAfterTheFirstLetter) {
    EXPECT_THAT(gf_regcodeVariants("HBABC"), ElementsAre("HB-ABC", "H-BABC", "HBABC"));
    EXPECT_THAT(gf_regcodeVariants("DABCD"), ElementsAre("DA-BCD", "D-ABCD", "DABCD"));
}

TEST(RegcodeVariants, ofAnAmericanRegistrationHaveNoHyphen) {
    EXPECT_THAT(gf_regcodeVariants("N12345"), ElementsAre("N12345"));
}

TEST(RegcodeVariants, ofAHyphenatedRegistrationAreItself) {
    EXPECT_THAT(gf_regcodeVariants("G-ABCD"), ElementsAre("G-ABCD"));
}

TEST(RegcodeVariants, ofLessThanFiveCharactersAreItself) {
    EXPECT_THAT(gf_regcodeVariants("ABC"), ElementsAre("ABC"));
    EXPECT_THAT(gf_regcodeVariants("ABCD"), ElementsAre("ABCD"));
    EXPECT_THAT(gf_regcodeVariants(""), ElementsAre(""));
}

TEST_F(ReferenceTables, aFeedRegistrationFindsTheHyphenatedKey) {
    addRegistration("D-ABCD", "DLH");
    ASSERT_TRUE(gf_findRegcodeRecord("DABCD"));
    EXPECT_EQ(gf_findRegcodeRecord("DABCD")->airl, "DLH");
}

TEST_F(ReferenceTables, theHyphenAfterTwoLettersIsFoundBeforeTheOneAfterOne) {
    addRegistration("HBABC", "none");
    EXPECT_EQ(gf_findRegcodeRecord("HBABC")->airl, "none");
    addRegistration("H-BABC", "one");
    EXPECT_EQ(gf_findRegcodeRecord("HBABC")->airl, "one");
    addRegistration("HB-ABC", "two");
    EXPECT_EQ(gf_findRegcodeRecord("HBABC")->airl, "two");
}

TEST_F(ReferenceTables, anUnknownOrEmptyRegistrationHasNoRecord) {
    addRegistration("");
    EXPECT_FALSE(gf_findRegcodeRecord("PH-XYZ"));
    EXPECT_FALSE(gf_findRegcodeRecord(""));
}

TEST_F(ReferenceTables, registrationsAreComparedExactly) {
    addRegistration("PH-BXA");
    EXPECT_FALSE(gf_findRegcodeRecord("ph-bxa"));
    EXPECT_FALSE(gf_findRegcodeRecord("PH-BXAA"));
}

TEST_F(ReferenceTables, aShortRegistrationIsFoundAnywhereInAText) {
    addRegistration("N12AB");
    EXPECT_EQ(gf_findRegcodeInText("A title N12AB with more"), "N12AB");
    EXPECT_EQ(gf_findRegcodeInText("N12AB"), "N12AB");
    EXPECT_EQ(gf_findRegcodeInText("xN12ABx"), "N12AB");
    EXPECT_FALSE(gf_findRegcodeInText("N12A"));
    EXPECT_FALSE(gf_findRegcodeInText(""));
}

TEST_F(ReferenceTables, aRegistrationOfSixCharactersIsNotLookedForInAText) {
    addRegistration("PH-BXA");
    EXPECT_FALSE(gf_findRegcodeInText("KLM PH-BXA"));
}

TEST_F(ReferenceTables, ofSeveralRegistrationsInATextTheFirstOfTheTableIsFound) {
    for (const char* reg : {"PH-BXA", "Z999", "C333", "A1", "D4444"}) {
        addRegistration(reg);
    }
    EXPECT_EQ(gf_findRegcodeInText("A1 D4444 C333 PH-BXA"), "C333");
}

TEST_F(ReferenceTables, anEmptyRegistrationOccursInEveryText) {
    addRegistration("");
    EXPECT_EQ(gf_findRegcodeInText("any"), "");
    EXPECT_EQ(gf_findRegcodeInText(""), "");
}

TEST_F(ReferenceTables, anAirlineIsKnownByItsExactCode) {
    gIcaoAirlines = {"KLM", ""};
    EXPECT_TRUE(gf_isIcaoAirline("KLM"));
    EXPECT_FALSE(gf_isIcaoAirline("klm"));
    EXPECT_FALSE(gf_isIcaoAirline("XXX"));
    EXPECT_FALSE(gf_isIcaoAirline(""));
}

TEST_F(ReferenceTables, aPublisherIsFoundByAnyOfItsNamesAndReportedByItsFirst) {
    gPublishers = {{"Alpha Scenery", "AlphaSim"}, {"Beta"}};
    EXPECT_EQ(gf_findPublisher("C:\\Addons\\alphasim EHAM"), "Alpha Scenery");
    EXPECT_EQ(gf_findPublisher("ALPHA SCENERY"), "Alpha Scenery");
    EXPECT_EQ(gf_findPublisher("my beta airport"), "Beta");
    EXPECT_FALSE(gf_findPublisher("gamma"));
}

TEST_F(ReferenceTables, theFirstPublisherOfTheListIsFound) {
    gPublishers = {{"One", "common"}, {"Two", "common"}};
    EXPECT_EQ(gf_findPublisher("common"), "One");
}

TEST_F(ReferenceTables, anEmptyAliasOccursInEveryName) {
    gPublishers = {{}, {"Alpha", ""}};
    EXPECT_EQ(gf_findPublisher("anything"), "Alpha");
    EXPECT_EQ(gf_findPublisher(""), "Alpha");
}

TEST_F(ReferenceTables, aPathWithOrbxInAnyCaseIsTheSimulatorAddOnAndTheScanLogSaysSo) {
    gPublishers = {{"Alpha", "airports"}};
    std::vector<std::string> scanLog;
    const auto toScanLog = [&scanLog](std::string_view line) { scanLog.emplace_back(line); };
    EXPECT_EQ(gf_publisherFromFileName("C:\\ORBX\\airports", toScanLog), "simaddon");
    EXPECT_EQ(gf_publisherFromFileName("C:\\Orbx\\airports", toScanLog), "simaddon");
    EXPECT_THAT(scanLog, ElementsAre("from filename => publisher simaddon", "from filename => publisher simaddon"));
}

TEST_F(ReferenceTables, anyOtherPathIsThatOfThePublisherInIt) {
    gPublishers = {{"Alpha", "airports"}};
    const auto toNowhere = [](std::string_view line) { FAIL() << line; };
    EXPECT_EQ(gf_publisherFromFileName("C:\\x\\airports", toNowhere), "Alpha");
    EXPECT_EQ(gf_publisherFromFileName("C:\\x\\y", toNowhere), "");
}

TEST_F(ReferenceTables, theRegistrationTableHoldsWhatAnOrdinaryMapHolds) {
    std::mt19937 random(5);
    std::map<std::string, std::string> expected;
    for (int i = 0; i < 20000; ++i) {
        const std::string reg = std::to_string(random() % 15000);
        const std::string airline = std::to_string(random() % 100);
        EXPECT_EQ(DbaseTable.insert(reg, {airline, {}, {}, false}), expected.emplace(reg, airline).second);
    }
    EXPECT_EQ(DbaseTable.size(), expected.size());
    for (int i = 0; i < 15000; ++i) {
        const auto record = DbaseTable.find(std::to_string(i));
        const auto known = expected.find(std::to_string(i));
        ASSERT_EQ(record.has_value(), known != expected.end()) << i;
        if (record) {
            EXPECT_EQ(record->airl, known->second);
        }
    }
}

TEST_F(ReferenceTables, aRegistrationIsPlacedInTheOrderOfInsertion) {
    addRegistration("B");
    addRegistration("A");
    EXPECT_EQ(DbaseTable.placeOf("B"), 0U);
    EXPECT_EQ(DbaseTable.placeOf("A"), 1U);
    EXPECT_EQ(DbaseTable.placeOf("C"), std::nullopt);
}
