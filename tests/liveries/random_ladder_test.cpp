// With RANDOM on: who is drawn at each step of the ladder, at each depth.
#include <array>
#include <map>
#include <set>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include <fmt/format.h>

#include "core/random.h"
#include "tests/liveries/matching_test.h"

using testing::ElementsAre;
using testing::Pair;

namespace {

/// Who is drawn among at a step of the ladder, from a depth on.
struct Draw {
    const char* name;
    Wanted aircraft;
    int step;
    int lowestDepth; ///< of MATCHING_DEPTH; below it there is no livery at all
    std::set<std::string> titles;
};

const std::vector<Draw> drawsOfAll{
    {"airline and type", {"KLM", "A320"}, 2, 2, {"KLM 1", "KLM 2", "KLM 3", "KLM 4"}},
    {"airline of the data base", {"XXX", "A320", "PH-OPR"}, 2, 2, {"KLM 1", "KLM 2", "KLM 3", "KLM 4"}},
    {"freighter", {"KLM", "B744", "", true}, 2, 2, {"KLM F1", "KLM F2", "KLM F3"}},
    {"passenger flight of the same", {"KLM", "B744"}, 2, 2, {"KLM P1", "KLM P2"}},
    {"freighter without freighters", {"GEC", "B744", "", true}, 2, 2, {"GEC P1", "GEC P2"}},
    {"similar types of the airline", {"SWR", "A320"}, 3, 3, {"SWR A319 1", "SWR A319 2", "SWR A321 1", "SWR A321 2"}},
    {"similar types, freighter",
     {"FDX", "A320", "", true},
     3,
     3,
     {"FDX A319 F1", "FDX A319 F2", "FDX A321 F1", "FDX A321 F2"}},
    {"private owner, generic", {"PVT", "C172"}, 4, 2, {"ZZZ C172 1", "ZZZ C172 2", "ZZZ C172 3"}},
    {"light, generic", {"XXX", "C172"}, 4, 3, {"ZZZ C172 1", "ZZZ C172 2", "ZZZ C172 3"}},
    {"light, generic, freighter", {"XXX", "C172", "", true}, 4, 3, {"ZZZ C172 1", "ZZZ C172 2", "ZZZ C172 3"}},
    {"large, generic", {"XXX", "A320"}, 4, 4, {"ZZZ A320 1", "ZZZ A320 2", "ZZZ A320 3"}},
    {"any airline", {"XXX", "P28A"}, 5, 3, {"TST P28A 1", "TST P28A 2", "USA P28A"}},
    {"any airline, freighter", {"XXX", "C208", "", true}, 5, 3, {"FDX C208 F1", "FDX C208 F2", "TST C208 F"}},
    {"any airline, similar", {"XXX", "DA40"}, 6, 3, {"TST DA42 1", "USA DA42 2", "TST DA62 1", "USA DA62 2"}},
    {"any airline, similar, freighter", {"XXX", "DA40", "", true}, 6, 3, {"TST DA42 F", "TST DA62 F"}},
    {"any airline, any type of the kind", {"XXX", "R44"}, 6, 3, {"TST EC35 1", "TST EC35 2", "TST B06 1", "TST B06 2"}},
};

const std::vector<Draw> drawsOfLiveAlone{
    {"similar types of the data base's airline",
     {"XXX", "B738", "OE-SWR"},
     3,
     3,
     {"SWR B737 1", "SWR B737 2", "SWR B739 1", "SWR B739 2"}},
};

const std::vector<Draw> drawsOfStaticAlone{
    {"similar types of the airline, of whatever category",
     {"EZE", "E190"},
     3,
     3,
     {"EZE E135 1", "EZE E135 2", "EZE E195 1", "EZE E195 2"}},
};

class RandomLadder : public LiveryMatching {
protected:
    static constexpr int drawsPerCase = 600;

    RandomLadder() {
        RANDOM.value = true;
        gf_seedRandom(42);
        clearLiveryTables();
        gCategoryTypes.large.insert({"B737", "B739", "E195"});
        gCategoryTypes.rotorcraft = {"EC35", "B06", "R44"};
        gSimilarGroups = {
            {"A319", "A320", "A321"}, {"B737", "B738", "B739"}, {"DA40", "DA42", "DA62"}, {"E135", "E190", "E195"}};
        DbaseTable.insert("OE-SWR", {"SWR", "B738", "SWR", false});
        installLiveries(liveries(), [] {
            ReservedTitles = {lf_findTitle("KLM reserved"), lf_findTitle("ZZZ C172 reserved"),
                              lf_findTitle("TST P28A reserved"), lf_findTitle("SWR A319 reserved")};
        });
        summarizeCategories();
    }

    static std::list<Livery> liveries() {
        return {
            livery("EZE", "E135", "EZE E135 1"),
            livery("EZE", "E135", "EZE E135 2"),
            livery("EZE", "E195", "EZE E195 1"),
            livery("EZE", "E195", "EZE E195 2"),
            freighter("FDX", "A319", "FDX A319 F1"),
            freighter("FDX", "A319", "FDX A319 F2"),
            freighter("FDX", "A321", "FDX A321 F1"),
            freighter("FDX", "A321", "FDX A321 F2"),
            livery("FDX", "A321", "FDX A321 P"),
            freighter("FDX", "C208", "FDX C208 F1"),
            freighter("FDX", "C208", "FDX C208 F2"),
            livery("GEC", "B744", "GEC P1"),
            livery("GEC", "B744", "GEC P2"),
            livery("KLM", "A320", "KLM 1"),
            livery("KLM", "A320", "KLM 2"),
            livery("KLM", "A320", "KLM 3"),
            livery("KLM", "A320", "KLM 4"),
            livery("KLM", "A320", "KLM reserved"),
            freighter("KLM", "B744", "KLM F1"),
            freighter("KLM", "B744", "KLM F2"),
            freighter("KLM", "B744", "KLM F3"),
            livery("KLM", "B744", "KLM P1"),
            livery("KLM", "B744", "KLM P2"),
            livery("SWR", "A319", "SWR A319 1"),
            livery("SWR", "A319", "SWR A319 2"),
            livery("SWR", "A319", "SWR A319 reserved"),
            livery("SWR", "A321", "SWR A321 1"),
            livery("SWR", "A321", "SWR A321 2"),
            livery("SWR", "B737", "SWR B737 1"),
            livery("SWR", "B737", "SWR B737 2"),
            livery("SWR", "B739", "SWR B739 1"),
            livery("SWR", "B739", "SWR B739 2"),
            livery("TST", "B06", "TST B06 1"),
            livery("TST", "B06", "TST B06 2"),
            freighter("TST", "C208", "TST C208 F"),
            livery("TST", "C208", "TST C208 P"),
            freighter("TST", "DA42", "TST DA42 F"),
            livery("TST", "DA42", "TST DA42 1"),
            freighter("TST", "DA62", "TST DA62 F"),
            livery("TST", "DA62", "TST DA62 1"),
            livery("TST", "EC35", "TST EC35 1"),
            livery("TST", "EC35", "TST EC35 2"),
            livery("TST", "P28A", "TST P28A 1"),
            livery("TST", "P28A", "TST P28A 2"),
            livery("TST", "P28A", "TST P28A reserved"),
            livery("USA", "DA42", "USA DA42 2"),
            livery("USA", "DA62", "USA DA62 2"),
            livery("USA", "P28A", "USA P28A"),
            livery("ZZZ", "A320", "ZZZ A320 1"),
            livery("ZZZ", "A320", "ZZZ A320 2"),
            livery("ZZZ", "A320", "ZZZ A320 3"),
            livery("ZZZ", "C172", "ZZZ C172 1"),
            livery("ZZZ", "C172", "ZZZ C172 2"),
            livery("ZZZ", "C172", "ZZZ C172 3"),
            livery("ZZZ", "C172", "ZZZ C172 reserved"),
        };
    }

    static std::string liveTitleFor(const Wanted& wanted) {
        AircraftRecord aircraft = aircraftOf(wanted);
        gf_rematchLivery(aircraft);
        return std::string(aircraft.liveryTitle);
    }

    static std::string parkedTitleFor(const Wanted& wanted) {
        AircraftRecord aircraft = aircraftOf(wanted);
        aircraft.isCargo = 0;
        gf_matchLivery(aircraft, wanted.isCargo);
        return std::string(aircraft.liveryTitle);
    }

    /// Each title, none other, and none much oftener than the others: above these bounds lies one in ten thousand.
    static void expectEven(const std::map<std::string, int>& counts, const std::set<std::string>& titles) {
        static constexpr std::array<double, 5> highest{0, 15.1, 18.4, 21.1, 23.5}; // chi-square by degrees of freedom
        std::set<std::string> drawn;
        const double mean = drawsPerCase / static_cast<double>(titles.size());
        double chiSquare = 0;
        for (const auto& [title, count] : counts) {
            drawn.insert(title);
            chiSquare += (count - mean) * (count - mean) / mean;
        }
        EXPECT_EQ(drawn, titles);
        EXPECT_LT(chiSquare, highest.at(titles.size() - 1)) << testing::PrintToString(counts);
    }

    template <typename Work>
    static void atEachDepth(const std::vector<Draw>& all, Work work) {
        for (const Draw& one : all) {
            for (int depth = 1; depth <= 4; ++depth) {
                SCOPED_TRACE(fmt::format("{}, depth {}", one.name, depth));
                MATCHING_DEPTH.value = depth;
                work(one, depth >= one.lowestDepth);
            }
        }
    }

    /// The match tells "step title".
    template <typename Match>
    static void expectSteps(const std::vector<Draw>& all, Match match) {
        atEachDepth(all, [&match](const Draw& one, bool isReached) {
            const std::string found = match(one.aircraft);
            EXPECT_EQ(found.substr(0, 1), isReached ? std::to_string(one.step) : "");
        });
    }

    template <typename TitleFor>
    static void expectEvenDraws(const std::vector<Draw>& all, TitleFor titleFor) {
        atEachDepth(all, [&titleFor](const Draw& one, bool isReached) {
            std::map<std::string, int> counts;
            for (int i = 0; i < drawsPerCase; ++i) {
                ++counts[titleFor(one.aircraft)];
            }
            if (isReached) {
                expectEven(counts, one.titles);
            } else {
                EXPECT_THAT(counts, ElementsAre(Pair("", drawsPerCase)));
            }
        });
    }
};

TEST_F(RandomLadder, aLiveAircraftEndsAtItsStepAtEachDepth) {
    const auto match = [this](const Wanted& wanted) { return live(wanted); };
    expectSteps(drawsOfAll, match);
    expectSteps(drawsOfLiveAlone, match);
}

TEST_F(RandomLadder, aStaticAircraftEndsAtItsStepAtEachDepth) {
    const auto match = [this](const Wanted& wanted) { return parked(wanted); };
    expectSteps(drawsOfAll, match);
    expectSteps(drawsOfStaticAlone, match);
}

TEST_F(RandomLadder, aLiveAircraftIsAsLikelyToGetEachTitleOfItsStepAndNoOther) {
    expectEvenDraws(drawsOfAll, liveTitleFor);
    expectEvenDraws(drawsOfLiveAlone, liveTitleFor);
}

TEST_F(RandomLadder, aStaticAircraftIsAsLikelyToGetEachTitleOfItsStepAndNoOther) {
    expectEvenDraws(drawsOfAll, parkedTitleFor);
    expectEvenDraws(drawsOfStaticAlone, parkedTitleFor);
}

} // namespace
