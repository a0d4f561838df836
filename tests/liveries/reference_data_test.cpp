// tests/liveries/reference_data_test.cpp
#include "liveries/reference_data.h"

#include <cmath>
#include <gmock/gmock.h>

#include <fmt/format.h>

#include "core/log.h"
#include "core/user_error.h"
#include "liveries/aircraft_types.h"
#include "liveries/reference_tables.h"
#include "tests/support/damaged_containers.h"
#include "tests/support/log_capture.h"
#include "tests/support/message_of.h"
#include "tests/support/reference_xml.h"
#include "tests/support/sealed_input.h"
#include "window/window_state.h"

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;
using testing::UnorderedElementsAre;

namespace fs = std::filesystem;

namespace {

class ReferenceData : public testing::Test {
protected:
    ReferenceData() {
        resetReferenceTables();
        resetWindowState();
    }
    ~ReferenceData() override {
        resetReferenceTables();
        resetWindowState();
    }

    static bool read(const ReferenceXml& xml) { return readText(xml.text()); }
    static bool readText(std::string_view text) {
        writeSealed("input/dbase.enc", text);
        return gf_readDataFiles();
    }

    /// The code and the text of the user error that the reading ends with.
    static std::string userErrorOf(const ReferenceXml& xml) { return userErrorOfText(xml.text()); }
    static std::string userErrorOfText(std::string_view text) {
        try {
            readText(text);
        } catch (const kvd::UserErrorException& error) {
            return fmt::format("{} {}", error.code(), error.what());
        }
        return "no user error";
    }

    LogCapture log;
};

struct RequiredSection {
    const char* section;
    const char* element;
    const char* attribute;
};

class RequiredReferenceSection : public ReferenceData, public testing::WithParamInterface<RequiredSection> {};

/// What a damaged file ends the reading with.
std::string failureOf(const DamagedContainer& damaged) {
    if (!damaged.bytes) {
        return "dbase.enc not available";
    }
    return damaged.failure.empty() ? "nothing thrown" : "dbase.enc stream decrypt failed";
}

/// What the log says of a file that is there.
std::string complaintOf(const DamagedContainer& damaged) {
    return damaged.failure.empty() ? "==> 'dbase.xml' not read because of "
                                   : fmt::format("==> gf_streamDecrypt exception: {}", damaged.failure);
}

constexpr double halfSpanNm(double meters) {
    return meters * 0.5 * 0.0005399568034557236;
}

} // namespace

// --- The road of the file ---

TEST_F(ReferenceData, isReadFromTheSealedFile) {
    EXPECT_TRUE(read(ReferenceXml()));
    EXPECT_THAT(gAllTypes, Contains("A320"));
    EXPECT_THAT(log.lines(), ElementsAre("0 publishers read", "0 dbase records read"));
}

TEST_F(ReferenceData, thatIsNotThereIsNamed) {
    EXPECT_EQ(messageOf([] { gf_readDataFiles(); }), "dbase.enc not available");
}

TEST_F(ReferenceData, thatIsDamagedIsNotReadAndStaysAsItIs) {
    std::vector<testing::Matcher<std::string>> complaints;
    for (const DamagedContainer& damaged : damagedContainers(ReferenceXml().text())) {
        SCOPED_TRACE(damaged.name);
        install(damaged, "input/dbase.enc");
        EXPECT_EQ(messageOf([] { EXPECT_FALSE(gf_readDataFiles()); }), failureOf(damaged));
        EXPECT_THAT(gAllTypes, IsEmpty());
        EXPECT_FALSE(fs::exists("input/dbase.xml"));
        EXPECT_TRUE(isInstalled(damaged, "input/dbase.enc"));
        if (damaged.bytes) {
            complaints.push_back(StartsWith(complaintOf(damaged)));
        }
    }
    EXPECT_THAT(log.errors(), testing::ElementsAreArray(complaints));
}

TEST_F(ReferenceData, withoutAFinalChunkOrWithBytesBehindItIsRead) {
    for (const DamagedContainer& tolerated : toleratedContainers(ReferenceXml().text())) {
        SCOPED_TRACE(tolerated.name);
        resetReferenceTables();
        install(tolerated, "input/dbase.enc");
        EXPECT_TRUE(gf_readDataFiles());
        EXPECT_THAT(gIcaoAirlines, ElementsAre("DLH", "KLM", "SWR"));
    }
    EXPECT_THAT(log.errors(), IsEmpty());
}

TEST_F(ReferenceData, thatDoesNotParseIsAnErrorLineAndAnswersFalse) {
    EXPECT_FALSE(readText("<root><aircrafts>"));
    EXPECT_THAT(log.errors(), ElementsAre("==> 'dbase.xml' not read because of Start-end tags mismatch"));
}

TEST_F(ReferenceData, leavesNoClearFileAfterASuccess) {
    read(ReferenceXml());
    EXPECT_FALSE(fs::exists("input/dbase.xml"));
    EXPECT_TRUE(fs::exists("input/dbase.enc"));
}

TEST_F(ReferenceData, leavesNoClearFileAfterAParseFailure) {
    readText("<root>");
    EXPECT_FALSE(fs::exists("input/dbase.xml"));
}

TEST_F(ReferenceData, leavesNoClearFileAfterAUserError) {
    userErrorOf(ReferenceXml().without("heavy"));
    EXPECT_FALSE(fs::exists("input/dbase.xml"));
}

TEST_F(ReferenceData, leavesNoMessageStanding) {
    read(ReferenceXml());
    EXPECT_EQ(shownMessage(), "");
}

TEST_F(ReferenceData, withoutARootIsAUserError) {
    EXPECT_EQ(userErrorOfText("<other/>"), "61 XML root missing: root");
}

TEST_F(ReferenceData, ofUtf16IsReadAsWell) {
    const std::string text = ReferenceXml().text();
    std::string wide = "\xFF\xFE";
    // Without the declaration, which names another encoding.
    for (const char c : text.substr(text.find("<root>"))) {
        wide += c;
        wide += '\0';
    }
    EXPECT_TRUE(readText(wide));
    EXPECT_THAT(gIcaoAirlines, ElementsAre("DLH", "KLM", "SWR"));
}

TEST_F(ReferenceData, withAnAttributeOfAMegabyteIsRead) {
    std::string types = "A320";
    while (types.size() < 1'000'000) {
        types += fmt::format(",T{}", types.size());
    }
    EXPECT_TRUE(read(ReferenceXml().with("aircrafts", fmt::format(R"(<aircraft types="{}"/>)", types))));
    EXPECT_GT(gAllTypes.size(), 90'000U);
}

TEST_F(ReferenceData, readAgainReplacesEveryTable) {
    read(ReferenceXml()
             .with("similar_types", R"(<similar types="A,B"/>)")
             .with("publishers", R"(<pub names="X"/>)")
             .with("wingspans", R"(<wingspan type="A388" meters="80"/>)")
             .with("fixes", R"(<fx wro="X" cor="A320"/>)")
             .with("thirdpartiesP3D", R"(<thirdpartieP3D pub="p"/>)")
             .with("dbase", R"(<db reg="PH-ABC"/>)"));
    read(ReferenceXml().with("aircrafts", R"(<aircraft types="C172"/>)"));
    EXPECT_THAT(gAllTypes, ElementsAre("C172"));
    EXPECT_THAT(gSimilarGroups, IsEmpty());
    EXPECT_THAT(gPublishers, IsEmpty());
    EXPECT_THAT(gHalfWingspans, IsEmpty());
    EXPECT_EQ(MaxHalfWingspan, 0.0);
    EXPECT_THAT(gFixes, IsEmpty());
    EXPECT_THAT(gThirdParties, IsEmpty());
    EXPECT_EQ(DbaseTable.size(), 0U);
}

// --- The sections that must be there ---

TEST_P(RequiredReferenceSection, thatIsMissingIsAUserError) {
    EXPECT_EQ(userErrorOf(ReferenceXml().without(GetParam().section)),
              fmt::format("61 Missing section: {}", GetParam().section));
}

TEST_P(RequiredReferenceSection, withOnlyEmptyAttributesIsAUserError) {
    const std::string empty =
        fmt::format(R"(<{0} {1}=""/><{0} {1}=" , ,"/><{0}/>)", GetParam().element, GetParam().attribute);
    EXPECT_EQ(userErrorOf(ReferenceXml().with(GetParam().section, empty)),
              fmt::format("61 In XML file section [{}], element [{}], attribute [{}] is empty.", GetParam().section,
                          GetParam().element, GetParam().attribute));
}

TEST_P(RequiredReferenceSection, isSplitAtCommasAndTrimmedAndEmptyTokensAreDropped) {
    const std::string content = fmt::format("<{0} {1}=\" AA \t,,\nBB\r\"/><other {1}=\"CC\"/><{0} {1}=\"DD,\"/>",
                                            GetParam().element, GetParam().attribute);
    ASSERT_TRUE(read(ReferenceXml().with(GetParam().section, content)));
    const std::map<std::string, const TypeSet*> sets{
        {"aircrafts", &gAllTypes},
        {"high_performance", &gCategoryTypes.highPerformance},
        {"heavy", &gCategoryTypes.heavy},
        {"large", &gCategoryTypes.large},
        {"buzjet", &gCategoryTypes.buzjet},
        {"rotorcraft", &gCategoryTypes.rotorcraft},
        {"cargo_types", &gCargoTypes},
        {"ICAO_airlines", &gIcaoAirlines},
        {"cargo_operators", &gCargoOperators},
        {"simaddonsP3D", &gSimaddonAirports},
    };
    EXPECT_THAT(*sets.at(GetParam().section), ElementsAre("AA", "BB", "DD"));
}

INSTANTIATE_TEST_SUITE_P(each, RequiredReferenceSection,
                         testing::Values(RequiredSection{"aircrafts", "aircraft", "types"},
                                         RequiredSection{"high_performance", "hpf", "types"},
                                         RequiredSection{"heavy", "hvy", "types"},
                                         RequiredSection{"large", "lar", "types"},
                                         RequiredSection{"buzjet", "bzj", "types"},
                                         RequiredSection{"rotorcraft", "rot", "types"},
                                         RequiredSection{"cargo_types", "cargo_type", "types"},
                                         RequiredSection{"ICAO_airlines", "ICAO", "codes"},
                                         RequiredSection{"cargo_operators", "ICAO", "codes"},
                                         RequiredSection{"simaddonsP3D", "simaddonP3D", "arpts"}),
                         [](const auto& each) { return std::string(each.param.section); });

TEST_F(ReferenceData, sectionsThatMayBeMissingMayHaveOnlyEmptyAttributes) {
    EXPECT_TRUE(read(ReferenceXml()
                         .with("similar_types", R"(<similar types=""/>)")
                         .with("publishers", R"(<pub names=""/>)")
                         .with("wingspans", R"(<wingspan type="" meters=""/>)")
                         .with("fixes", R"(<fx wro="" cor=""/>)")
                         .with("thirdpartiesP3D", R"(<thirdpartieP3D pub="" arpts=""/>)")
                         .with("dbase", R"(<db reg="" airl="" type="" opr="" cargo=""/>)")));
    EXPECT_THAT(log.errors(), ElementsAre("==> wingspan model  is not valid, skipped",
                                          "==> wrong fix  -> , the latter is not valid"));
    EXPECT_FALSE(gf_findPublisher("any")) << "a publisher without a name is none";
    EXPECT_EQ(DbaseTable.size(), 1U);
}

TEST_F(ReferenceData, sectionsThatMayBeMissingMayBeEmptyToo) {
    ReferenceXml xml;
    for (const char* section : {"similar_types", "publishers", "wingspans", "fixes", "thirdpartiesP3D", "dbase"}) {
        xml.with(section, "");
    }
    EXPECT_TRUE(read(xml));
    EXPECT_THAT(log.errors(), IsEmpty());
}

// --- Similar types, publishers, third parties ---

TEST_F(ReferenceData, aSimilarGroupIsSorted) {
    read(ReferenceXml().with("similar_types", R"(<similar types="B738, A320 ,A319"/><similar types="C172"/>)"));
    EXPECT_THAT(gSimilarGroups, ElementsAre(ElementsAre("A319", "A320", "B738"), ElementsAre("C172")));
}

TEST_F(ReferenceData, aSimilarElementWithoutTokensIsAnEmptyGroup) {
    read(ReferenceXml().with("similar_types", R"(<similar types=""/><similar/>)"));
    EXPECT_THAT(gSimilarGroups, ElementsAre(IsEmpty(), IsEmpty()));
}

TEST_F(ReferenceData, publishersAreInTheOrderOfTheirListsWithoutExactDuplicates) {
    read(ReferenceXml().with("publishers", R"(<pub names="Zulu,z"/><pub names="Alpha, a"/><pub names="Zulu,z"/>)"
                                           R"(<pub names="Alpha,a"/>)"));
    // The lists are compared as they stand, so a blank makes two of one.
    EXPECT_THAT(gPublishers,
                ElementsAre(ElementsAre("Alpha", "a"), ElementsAre("Alpha", "a"), ElementsAre("Zulu", "z")));
    EXPECT_THAT(log.lines(), Contains("3 publishers read"));
}

TEST_F(ReferenceData, anEmptyAliasOfAPublisherIsKept) {
    read(ReferenceXml().with("publishers", R"(<pub names="Alpha,,a,"/>)"));
    EXPECT_THAT(gPublishers, ElementsAre(ElementsAre("Alpha", "", "a", "")));
}

TEST_F(ReferenceData, aThirdPartyWithoutAirportsIsKept) {
    read(ReferenceXml().with("thirdpartiesP3D",
                             R"(<thirdpartieP3D pub="One" arpts="EHAM12, LSZH3"/>)"
                             R"(<thirdpartieP3D pub="Two" arpts=""/><thirdpartieP3D pub="Three"/>)"));
    ASSERT_EQ(gThirdParties.size(), 3U);
    EXPECT_EQ(gThirdParties[0].pub, "One");
    EXPECT_THAT(gThirdParties[0].arpts, ElementsAre("EHAM12", "LSZH3"));
    EXPECT_EQ(gThirdParties[1].pub, "Two");
    EXPECT_THAT(gThirdParties[1].arpts, IsEmpty());
    EXPECT_EQ(gThirdParties[2].pub, "Three");
}

// --- Wing spans ---

TEST_F(ReferenceData, aWingspanIsHeldAsHalfOfItInNauticalMiles) {
    read(ReferenceXml().with("wingspans", R"(<wingspan type="A320" meters="35.8"/>)"));
    EXPECT_DOUBLE_EQ(gf_wingspanOfType("A320"), halfSpanNm(35.8));
    EXPECT_DOUBLE_EQ(MaxHalfWingspan, halfSpanNm(35.8));
}

TEST_F(ReferenceData, aWingspanOfAnUnknownTypeIsSkippedWithItsMessageAndDoesNotTouchTheMaximum) {
    read(ReferenceXml().with("wingspans", R"(<wingspan type="A320" meters="35.8"/><wingspan type="XXXX" meters="99"/>)"
                                          R"(<wingspan meters="99"/>)"));
    EXPECT_THAT(log.errors(), ElementsAre("==> wingspan model XXXX is not valid, skipped",
                                          "==> wingspan model  is not valid, skipped"));
    EXPECT_DOUBLE_EQ(MaxHalfWingspan, halfSpanNm(35.8));
    EXPECT_EQ(gHalfWingspans.size(), 1U);
}

TEST_F(ReferenceData, ofTwoWingspansOfATypeTheFirstStandsButBothRaiseTheMaximum) {
    read(ReferenceXml().with("wingspans", R"(<wingspan type="A320" meters="30"/><wingspan type="A320" meters="40"/>)"));
    EXPECT_DOUBLE_EQ(gf_wingspanOfType("A320"), halfSpanNm(30));
    EXPECT_DOUBLE_EQ(MaxHalfWingspan, halfSpanNm(40));
}

TEST_F(ReferenceData, aWingspanWithoutMetersIsZero) {
    read(ReferenceXml().with("wingspans", R"(<wingspan type="A320"/><wingspan type="B738" meters="wide"/>)"));
    EXPECT_EQ(gf_wingspanOfType("A320"), 0.0);
    EXPECT_EQ(gf_wingspanOfType("B738"), 0.0);
}

TEST_F(ReferenceData, aTypeWithoutAWingspanHasTheAverageOfItsCategory) {
    read(ReferenceXml().with("wingspans", R"(<wingspan type="A320" meters="30"/><wingspan type="B744" meters="60"/>)"
                                          R"(<wingspan type="A388" meters="80"/><wingspan type="C172" meters="11"/>)"));
    EXPECT_DOUBLE_EQ(gf_wingspanOfType("B738"), halfSpanNm(30));
    EXPECT_DOUBLE_EQ(gf_wingspanOfType("unknown, so light"), halfSpanNm(11));
    read(ReferenceXml()
             .with("heavy", R"(<hvy types="B744,A388,B77W"/>)")
             .with("wingspans", R"(<wingspan type="B744" meters="60"/><wingspan type="A388" meters="80"/>)"));
    EXPECT_DOUBLE_EQ(gf_wingspanOfType("B77W"), halfSpanNm(70));
}

TEST_F(ReferenceData, aCategoryWithoutAnyWingspanAveragesToNotANumber) {
    read(ReferenceXml().with("wingspans", R"(<wingspan type="A320" meters="30"/>)"));
    EXPECT_TRUE(std::isnan(gf_wingspanOfType("H60")));
}

TEST_F(ReferenceData, aTypeInLargeAndHeavyIsLarge) {
    read(ReferenceXml().with("heavy", R"(<hvy types="A320"/>)").with("large", R"(<lar types="A320"/>)"));
    EXPECT_EQ(gf_categoryOfType("A320"), AircraftCategory::Large);
}

TEST_F(ReferenceData, aTypeInNoCategoryIsLightEvenIfItIsNoKnownType) {
    read(ReferenceXml());
    EXPECT_EQ(gf_categoryOfType("C172"), AircraftCategory::Light);
    EXPECT_EQ(gf_categoryOfType("ZZZZ"), AircraftCategory::Light);
}

// --- Fixes ---

TEST_F(ReferenceData, aFixLeadsFromTheWrongTypeToTheRightOne) {
    read(ReferenceXml().with("fixes", R"(<fx wro="A32" cor="A320"/>)"));
    ASSERT_TRUE(gFixes.contains("A32"));
    EXPECT_EQ(gFixes.find("A32")->second, "A320");
}

TEST_F(ReferenceData, aSecondFixOfAWrongTypeIsSkipped) {
    read(ReferenceXml().with("fixes", R"(<fx wro="A32" cor="A320"/><fx wro="A32" cor="B738"/>)"));
    EXPECT_EQ(gFixes.find("A32")->second, "A320");
    EXPECT_THAT(log.errors(), ElementsAre("==> wrong part of fix: 'A32', already exists, skipped"));
}

TEST_F(ReferenceData, aFixToNoTypeIsSkipped) {
    read(ReferenceXml().with("fixes", R"(<fx wro="A32" cor="A32X"/><fx wro="B73" cor=""/><fx wro="C17"/>)"));
    EXPECT_THAT(gFixes, IsEmpty());
    EXPECT_THAT(log.errors(), ElementsAre("==> wrong fix A32 -> A32X, the latter is not valid",
                                          "==> wrong fix B73 -> , the latter is not valid",
                                          "==> wrong fix C17 -> , the latter is not valid"));
}

// --- Registrations ---

TEST_F(ReferenceData, aRegistrationHasAirlineTypeOperatorAndCargo) {
    read(ReferenceXml().with("dbase", R"(<db reg="PH-BXA" airl="KLM" type="B738" opr="KLC" cargo="true"/>)"));
    const auto record = gf_findRegcodeRecord("PH-BXA");
    ASSERT_TRUE(record);
    EXPECT_EQ(record->airl, "KLM");
    EXPECT_EQ(record->type, "B738");
    EXPECT_EQ(record->opr, "KLC");
    EXPECT_TRUE(record->cargo);
    EXPECT_THAT(log.lines(), Contains("1 dbase records read"));
}

TEST_F(ReferenceData, whatARegistrationLacksIsEmpty) {
    read(ReferenceXml().with("dbase", R"(<db reg="PH-BXA" airl=""/>)"));
    const auto record = gf_findRegcodeRecord("PH-BXA");
    ASSERT_TRUE(record);
    EXPECT_EQ(record->airl, "");
    EXPECT_EQ(record->type, "");
    EXPECT_EQ(record->opr, "");
    EXPECT_FALSE(record->cargo);
}

TEST_F(ReferenceData, aDuplicateRegistrationKeepsTheFirstRecordAndLogsOncePerDuplicate) {
    read(ReferenceXml().with("dbase", R"(<db reg="PH-BXA" airl="KLM"/><db reg="PH-BXA" airl="DLH"/><other/>)"
                                      R"(<db reg="PH-BXA" airl="SWR"/><db reg="PH-BXB" airl="SWR"/>)"));
    EXPECT_EQ(gf_findRegcodeRecord("PH-BXA")->airl, "KLM");
    EXPECT_THAT(log.errors(), ElementsAre("==> regcode PH-BXA already exists", "==> regcode PH-BXA already exists"));
    EXPECT_THAT(log.lines(), Contains("2 dbase records read"));
}

TEST_F(ReferenceData, manyRegistrationsKeepTheirRecords) {
    std::string rows;
    for (int i = 0; i < 5000; ++i) {
        rows += fmt::format(R"(<db reg="X-{}" airl="A{}" type="T{}" opr="O{}" cargo="{}"/>)", i, i % 300, i % 100,
                            i % 7, i % 2 == 0);
    }
    read(ReferenceXml().with("dbase", rows));
    ASSERT_EQ(DbaseTable.size(), 5000U);
    for (int i = 0; i < 5000; ++i) {
        const auto record = gf_findRegcodeRecord(fmt::format("X-{}", i));
        ASSERT_TRUE(record);
        EXPECT_EQ(fmt::format("{} {} {} {}", record->airl, record->type, record->opr, record->cargo),
                  fmt::format("A{} T{} O{} {}", i % 300, i % 100, i % 7, i % 2 == 0));
    }
}
