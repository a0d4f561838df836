#include "liveries/similar_models.h"

#include <algorithm>
#include <random>

#include <gmock/gmock.h>

#include <fmt/format.h>

#include "tests/support/log_capture.h"
#include "tests/support/test_liveries.h"

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Key;
using testing::UnorderedElementsAre;

namespace {

class SimilarModels : public testing::Test {
protected:
    SimilarModels() { reset(); }
    ~SimilarModels() override { reset(); }

    static void reset() {
        clearLiveryTables();
        resetReferenceTables();
    }

    static std::vector<std::string> namesOf(const std::vector<CategorizedType>& types) {
        std::vector<std::string> names;
        for (const CategorizedType& type : types) {
            names.emplace_back(type.type);
        }
        return names;
    }

    static std::vector<std::string> substitutes(std::string_view airline, std::string_view type) {
        const auto types = SimilarByAirline.find(airline);
        if (types == SimilarByAirline.end()) {
            return {};
        }
        const auto similar = types->second.of(type);
        return namesOf({similar.begin(), similar.end()});
    }

    LogCapture log;
};

TEST_F(SimilarModels, eachMemberHasTheOthersOfItsGroup) {
    gSimilarGroups = {{"A319", "A320", "A321"}, {"B737", "B738"}};
    installLiveries({});
    EXPECT_THAT(SimilarAll.at("A320"), ElementsAre("A319", "A321"));
    EXPECT_THAT(SimilarAll.at("B738"), ElementsAre("B737"));
    EXPECT_TRUE(log.contains("5 similar model definitions"));
    EXPECT_THAT(SimilarWithLiveries, IsEmpty());
}

TEST_F(SimilarModels, aGroupOfOneHasNoOthers) {
    gSimilarGroups = {{"A319"}, {}};
    installLiveries({livery("KLM", "A319", "1")});
    EXPECT_THAT(SimilarAll, IsEmpty());
    EXPECT_TRUE(log.contains("0 similar model definitions"));
}

TEST_F(SimilarModels, ofATypeInTwoGroupsTheFirstListInOrderCounts) {
    gSimilarGroups = {{"A320", "B738"}, {"A319", "A320"}, {"A319", "A320"}};
    installLiveries({});
    EXPECT_THAT(SimilarAll.at("A320"), ElementsAre("A319"));
    EXPECT_THAT(SimilarAll.at("B738"), ElementsAre("A320"));
    EXPECT_EQ(SimilarAll.size(), 3U);
}

TEST_F(SimilarModels, onlyTypesWithALiveryOfEitherKindCount) {
    gCategoryTypes.large = {"A319"};
    gSimilarGroups = {{"A318", "A319", "A320", "A321"}};
    installLiveries({livery("KLM", "A319", "1"), freighter("DLH", "A321", "2")});
    EXPECT_THAT(SimilarWithLiveries.at("A318"), ElementsAre(CategorizedType{"A319", AircraftCategory::Large},
                                                            CategorizedType{"A321", AircraftCategory::Light}));
    EXPECT_THAT(namesOf(SimilarWithLiveries.at("A319")), ElementsAre("A321"));
    EXPECT_EQ(SimilarWithLiveries.size(), 4U);
}

TEST_F(SimilarModels, ofATypeInTwoGroupsTheFirstListWithALiveryCounts) {
    gSimilarGroups = {{"A320", "B738"}, {"A319", "A320"}};
    installLiveries({livery("KLM", "B738", "1")});
    EXPECT_THAT(namesOf(SimilarWithLiveries.at("A320")), ElementsAre("B738")) << "of A319 there is none";
    EXPECT_EQ(SimilarWithLiveries.size(), 1U);
    clearLiveryTables();
    installLiveries({livery("KLM", "B738", "1"), livery("KLM", "A319", "2")});
    EXPECT_THAT(namesOf(SimilarWithLiveries.at("A320")), ElementsAre("A319"));
    EXPECT_EQ(SimilarWithLiveries.size(), 1U) << "A319 and B738 have nothing but A320, which has no livery";
}

TEST_F(SimilarModels, anAirlineHasSubstitutesForTypesThatItHasNot) {
    gSimilarGroups = {{"A318", "A319", "A320", "A321"}};
    installLiveries({livery("KLM", "A319", "1"), livery("KLM", "A321", "2"), livery("DLH", "A320", "3"),
                     livery("SWR", "B738", "4")});
    EXPECT_THAT(substitutes("KLM", "A318"), ElementsAre("A319", "A321"));
    EXPECT_THAT(substitutes("KLM", "A320"), ElementsAre("A319", "A321"));
    EXPECT_THAT(substitutes("KLM", "A319"), IsEmpty());
    EXPECT_THAT(substitutes("DLH", "A318"), ElementsAre("A320"));
    EXPECT_THAT(SimilarByAirline, UnorderedElementsAre(Key("KLM"), Key("DLH")));
}

TEST_F(SimilarModels, aLongAirlineCodeCountsByItsFirstThreeCharacters) {
    gSimilarGroups = {{"A319", "A320"}};
    installLiveries({livery("KLMX", "A319", "1"), livery("DLHX", "A319", "2"), livery("DLH", "A320", "3")});
    EXPECT_THAT(SimilarByAirline, UnorderedElementsAre(Key("DLH")));
    EXPECT_THAT(substitutes("DLH", "A319"), ElementsAre("A320"));
}

TEST_F(SimilarModels, aShortAirlineCodeCountsAsItIs) {
    gSimilarGroups = {{"A319", "A320"}};
    installLiveries({livery("KL", "A319", "1"), livery("K", "A320", "2")});
    EXPECT_THAT(SimilarByAirline, UnorderedElementsAre(Key("KL"), Key("K")));
    EXPECT_THAT(substitutes("KL", "A320"), ElementsAre("A319"));
    EXPECT_THAT(substitutes("K", "A319"), ElementsAre("A320"));
}

/// The rule as it reads, type by type.
std::vector<std::string> substitutesByRule(std::string_view airline, std::string_view type) {
    std::vector<std::string> found;
    const auto& own = AirlineTable.at(airline);
    if (!own.contains(type)) {
        for (const CategorizedType& other : SimilarWithLiveries.find(type)->second) {
            if (own.contains(other.type)) {
                found.emplace_back(other.type);
            }
        }
    }
    return found;
}

TEST_F(SimilarModels, ofManyAirlinesAndOverlappingGroupsTheRuleHolds) {
    std::mt19937 random(7);
    const auto type = [&random] { return fmt::format("T{}", random() % 60); };
    for (int group = 0; group < 15; ++group) {
        SimilarGroup types;
        for (int i = 0; i < 6; ++i) {
            types.push_back(type());
        }
        std::sort(types.begin(), types.end());
        gSimilarGroups.push_back(std::move(types));
    }
    std::list<Livery> liveries;
    for (int i = 0; i < 200; ++i) {
        liveries.push_back(livery(fmt::format("A{:02}", random() % 40), type(), fmt::format("Title {}", i)));
    }
    installLiveries(std::move(liveries));
    std::size_t entries = 0;
    for (const auto& [airline, types] : AirlineTable) {
        for (const auto& [similar, others] : SimilarWithLiveries) {
            const auto expected = substitutesByRule(airline, similar);
            EXPECT_EQ(substitutes(airline, similar), expected) << airline << ' ' << similar;
            entries += expected.empty() ? 0 : 1;
        }
    }
    EXPECT_GT(entries, 100U);
    std::size_t stored = 0;
    for (const auto& [airline, types] : SimilarByAirline) {
        stored += types.size();
    }
    EXPECT_EQ(stored, entries);
}

} // namespace
