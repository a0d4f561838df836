#include "liveries/livery_tables.h"

#include <filesystem>
#include <map>
#include <string>

#include <gmock/gmock.h>

#include <fmt/format.h>
#include <pugixml.hpp>

#include "core/parameter_file.h"
#include "core/parameters.h"
#include "liveries/livery_matching.h"
#include "tests/support/log_capture.h"
#include "tests/support/test_liveries.h"

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::UnorderedElementsAre;

namespace {

class LiveryTables : public testing::Test {
protected:
    LiveryTables() { reset(); }
    ~LiveryTables() override { reset(); }

    static void reset() {
        clearLiveryTables();
        resetLiveryMatching();
        resetReferenceTables();
        resetParameters();
    }

    static const Titles& titles(std::size_t index, const char* airline, const char* type) {
        return AirlineModelTable.at(index).at(airline).at(type).titles;
    }

    static void reserve(std::string_view title) { ReservedTitles.push_back(lf_findTitle(title)); }

    LogCapture log;
};

TEST_F(LiveryTables, theTitlesOfAnAirlineAndTypeKeepTheirOrder) {
    installLiveries({livery("KLM", "A320", "Two"), livery("KLM", "B738", "Three"), livery("DLH", "A320", "Four"),
                     livery("KLM", "A320", "One")});
    EXPECT_THAT(titles(passengerIndex, "KLM", "A320"), ElementsAre("One", "Two"));
    EXPECT_THAT(titles(passengerIndex, "KLM", "B738"), ElementsAre("Three"));
    EXPECT_THAT(titles(passengerIndex, "DLH", "A320"), ElementsAre("Four"));
    EXPECT_EQ(AirlineTable.size(), 2U);
}

TEST_F(LiveryTables, freightersStandApartAndLeaveNoEmptyKeys) {
    installLiveries({livery("KLM", "B744", "Jumbo"), freighter("KLM", "B744", "Jumbo F"), livery("KLM", "A320", "Bus"),
                     freighter("FDX", "MD11", "Fedex")});
    EXPECT_THAT(titles(passengerIndex, "KLM", "B744"), ElementsAre("Jumbo"));
    EXPECT_THAT(titles(cargoIndex, "KLM", "B744"), ElementsAre("Jumbo F"));
    EXPECT_FALSE(AirlineModelTable[passengerIndex].contains("FDX"));
    EXPECT_FALSE(AirlineModelTable[cargoIndex].at("KLM").contains("A320"));
    EXPECT_FALSE(ModelTable[passengerIndex].contains("MD11"));
    EXPECT_FALSE(ModelTable[cargoIndex].contains("A320"));
    EXPECT_EQ(AirlineTable.at("KLM").at("B744").size(), 2U);
}

TEST_F(LiveryTables, inAnUnsortedListALaterGroupOfTheSameKeyIsLost) {
    lf_buildAirlineTables(
        viewsOf({livery("KLM", "A320", "One"), livery("DLH", "A320", "Two"), livery("KLM", "A320", "Three")}));
    EXPECT_THAT(titles(passengerIndex, "KLM", "A320"), ElementsAre("One"));
    EXPECT_EQ(lf_findTitle("Three"), "");
    EXPECT_EQ(lf_findTitle("Two"), "Two");
}

TEST_F(LiveryTables, noLiveriesAreNoTables) {
    installLiveries({});
    EXPECT_THAT(AirlineTable, IsEmpty());
    EXPECT_EQ(lf_findTitle(""), "");
}

TEST_F(LiveryTables, theTitlesStayWhenTheLiveriesAreGone) {
    installLiveries({livery("KLM", "A320", "A title that is too long to stand inside of a string object")});
    EXPECT_EQ(lf_findTitle("A title that is too long to stand inside of a string object").size(), 59U);
    EXPECT_EQ(lf_findTitle("A title that is"), "");
}

TEST_F(LiveryTables, aTypeHasTheTitlesOfAllAirlines) {
    installLiveries({livery("KLM", "A320", "One"), livery("DLH", "A320", "Two"), livery("ZZZ", "A320", "Three"),
                     livery("PVT", "C172", "Four")});
    EXPECT_THAT(ModelTable[passengerIndex].at("A320").titles, ElementsAre("Two", "One", "Three"))
        << "by airline, whatever else there is";
    EXPECT_THAT(ModelTable[passengerIndex].at("C172").titles, ElementsAre("Four"));
}

TEST_F(LiveryTables, aReservedTitleIsACandidateOnlyWhereThereIsNoOther) {
    installLiveries({livery("KLM", "A320", "One"), livery("KLM", "A320", "Two"), livery("DLH", "A320", "Three"),
                     livery("DLH", "B738", "Four")},
                    [] {
                        reserve("One");
                        reserve("Three");
                    });
    const auto candidates = [](const char* airline, const char* type) {
        return AirlineModelTable[passengerIndex].at(airline).at(type).candidates();
    };
    EXPECT_THAT(candidates("KLM", "A320"), ElementsAre("Two"));
    EXPECT_THAT(candidates("DLH", "A320"), ElementsAre("Three"));
    EXPECT_THAT(candidates("DLH", "B738"), ElementsAre("Four"));
    EXPECT_THAT(ModelTable[passengerIndex].at("A320").candidates(), ElementsAre("Two"));
}

TEST_F(LiveryTables, theTablesAreCounted) {
    installLiveries({livery("KLM", "A320", "One"), freighter("KLM", "B744", "Two"), livery("DLH", "B738", "Three")});
    RegcodeTable["PH-ABC"] = "One";
    logModelTables();
    logRegistrationCodes();
    EXPECT_THAT(log.lines(),
                ElementsAre("0 similar model definitions",
                            "2 airlines, 2 pax aircraft models and 1 cargo aircraft models", "1 registration codes"));
}

TEST_F(LiveryTables, clearedTheyCanBeBuiltAnew) {
    gSimilarGroups = {{"A319", "A320"}};
    installLiveries({livery("KLM", "A320", "One"), livery("KLM", "C172", "Light")});
    summarizeCategories();
    reserve("One");
    RegcodeTable["PH-ABC"] = lf_findTitle("One");
    SpecialRegcodes.insert("PH-ABC");
    UniqueRegcodes.insert("PH-ABC");
    hexidLiveries[20000] = lf_findTitle("One");
    FailedTitles.insert("One");
    clearLiveryTables();
    EXPECT_TRUE(AirlineTable.empty() && AirlineModelTable[0].empty() && ModelTable[0].empty());
    EXPECT_TRUE(RegcodeTable.empty() && SpecialRegcodes.empty() && UniqueRegcodes.empty() && ReservedTitles.empty());
    EXPECT_TRUE(SimilarAll.empty() && SimilarWithLiveries.empty() && SimilarByAirline.empty());
    EXPECT_TRUE(RandomTypes[0].empty());
    EXPECT_TRUE(hexidLiveries.empty());
    EXPECT_EQ(lf_findTitle("One"), "");
    EXPECT_TRUE(FailedTitles.contains("One"));
    resetFailedTitles();
    installLiveries({livery("DLH", "A320", "Two")});
    EXPECT_THAT(titles(passengerIndex, "DLH", "A320"), ElementsAre("Two"));
}

// What there is of each category.

class CategorySummary : public LiveryTables {
protected:
    CategorySummary() {
        gCategoryTypes.large = {"A320", "B738"};
        gCategoryTypes.heavy = {"B744"};
        gCategoryTypes.buzjet = {"GLF5"};
        gCategoryTypes.rotorcraft = {"EC35"};
        gCategoryTypes.highPerformance = {"F16"};
    }

    std::vector<std::string> summary() const {
        const std::size_t before = log.lines().size();
        summarizeCategories();
        const auto lines = log.lines();
        return {lines.begin() + static_cast<std::ptrdiff_t>(before), lines.end()};
    }
};

TEST_F(CategorySummary, eachCategoryIsToldInTurn) {
    installLiveries({livery("KLM", "A320", "1"), livery("KLM", "B738", "2"), freighter("KLM", "B738", "3"),
                     freighter("KLM", "B744", "4"), freighter("KLM", "B744", "5"), livery("KLM", "GLF5", "6"),
                     livery("KLM", "EC35", "7"), livery("KLM", "F16", "8"), livery("KLM", "P28A", "9"),
                     livery("KLM", "C172", "10")});
    EXPECT_THAT(summary(), ElementsAre("Category Light: 2 pax liveries", "  C172,P28A", //
                                       "Category Buzjets: 1 pax liverie", "  GLF5",     //
                                       "Category Large: 2 pax liveries and 1 cargo liverie", "  A320,B738",
                                       "Category Heavy: 0 pax liveries and 2 cargo liveries", "  B744",
                                       "Category HighPerf: 1 pax liverie", "  F16", //
                                       "Category Rotorcraft: 1 pax liverie", "  EC35"));
    EXPECT_TRUE(LIGHT_AIRCRAFT.value && HIGH_PERF_AIRCRAFT.value && HELICOPTERS.value);
}

TEST_F(CategorySummary, whatTheUserHasNotIsSwitchedOff) {
    installLiveries({});
    const auto lines = summary();
    EXPECT_THAT(lines,
                Contains("LIGHT_AIRCRAFT temporarily switched off because you do not have light aircraft installed"));
    EXPECT_THAT(
        lines,
        Contains("HIGH_PERF_AIRCRAFT temporarily switched off because you do not have High Perf aircraft installed"));
    EXPECT_THAT(lines, Contains("HELICOPTERS temporarily switched off because you do not have Helicopters installed"));
    for (const char* category : {"Light", "Buzjets", "Large", "Heavy", "HighPerf", "Rotorcraft"}) {
        EXPECT_THAT(lines, Contains(fmt::format("Category {}: No livery found", category)));
    }
    EXPECT_FALSE(LIGHT_AIRCRAFT.value || HIGH_PERF_AIRCRAFT.value || HELICOPTERS.value);
}

TEST_F(CategorySummary, whatIsSwitchedOffIsSaved) {
    std::filesystem::create_directories(gf_parameterFolder());
    installLiveries({livery("KLM", "F16", "1")});
    summarizeCategories();
    pugi::xml_document document;
    ASSERT_TRUE(document.load_file(gf_parameterFile().c_str()));
    std::map<std::string, std::string> saved;
    for (const pugi::xml_node node : document.child("root").child("parameters").children("parameter")) {
        saved[node.attribute("name").as_string()] = node.attribute("value").as_string();
    }
    EXPECT_EQ(saved["LIGHT_AIRCRAFT"], "false");
    EXPECT_EQ(saved["HELICOPTERS"], "false");
    EXPECT_FALSE(saved.contains("HIGH_PERF_AIRCRAFT"));
}

TEST_F(CategorySummary, whatIsOffAlreadyIsNotSwitchedOff) {
    HELICOPTERS.value = false;
    installLiveries({});
    EXPECT_THAT(summary(), Not(Contains(testing::StartsWith("HELICOPTERS"))));
}

TEST_F(CategorySummary, twentyTypesStandInARow) {
    std::list<Livery> liveries;
    for (int i = 0; i < 41; ++i) {
        const std::string type = fmt::format("T{:02}", i);
        liveries.push_back(livery("KLM", type, "Title " + type));
    }
    installLiveries(std::move(liveries));
    const auto lines = summary();
    ASSERT_GE(lines.size(), 4U);
    EXPECT_EQ(lines[0], "Category Light: 41 pax liveries");
    EXPECT_EQ(lines[1], "  T00,T01,T02,T03,T04,T05,T06,T07,T08,T09,T10,T11,T12,T13,T14,T15,T16,T17,T18,T19");
    EXPECT_EQ(lines[3], "  T40");
    EXPECT_EQ(lines[4], "Category Buzjets: No livery found");
}

TEST_F(CategorySummary, randomTypesAreKeptOfThreeCategories) {
    installLiveries({livery("KLM", "A320", "1"), livery("KLM", "GLF5", "2"), freighter("KLM", "EC35", "3"),
                     livery("KLM", "C172", "4"), livery("DLH", "C152", "5")});
    summarizeCategories();
    summarizeCategories();
    EXPECT_THAT(RandomTypes[0], ElementsAre(CategorizedType{"C152", AircraftCategory::Light},
                                            CategorizedType{"C172", AircraftCategory::Light}));
    EXPECT_THAT(RandomTypes[1], ElementsAre(CategorizedType{"GLF5", AircraftCategory::Buzjets}));
    EXPECT_THAT(RandomTypes[2], ElementsAre(CategorizedType{"EC35", AircraftCategory::Rotorcraft}));
    EXPECT_EQ(randomTypesOf(AircraftCategory::Rotorcraft), &RandomTypes[2]);
    EXPECT_EQ(randomTypesOf(AircraftCategory::Heavy), nullptr);
}

TEST_F(CategorySummary, theGenericTypesAreToldToo) {
    installLiveries({livery("ZZZ", "B738", "1"), livery("ZZZ", "A320", "2"), livery("ZZZ", "A320", "3"),
                     livery("KLM", "C172", "4")});
    summarizeGenericLiveries();
    EXPECT_THAT(log.lines(),
                ElementsAre("0 similar model definitions", "2 models have a generic livery", "  A320,B738"));
}

TEST_F(CategorySummary, oneGenericTypeIsOneModel) {
    installLiveries({livery("ZZZ", "A320", "2")});
    summarizeGenericLiveries();
    EXPECT_TRUE(log.contains("1 model have a generic livery"));
}

TEST_F(CategorySummary, noGenericLiveryIsTold) {
    installLiveries({livery("KLM", "A320", "2")});
    summarizeGenericLiveries();
    EXPECT_TRUE(log.contains("No generic liveries"));
}

} // namespace
