// A world of liveries small enough to see through, and aircraft that look for one of them.
#pragma once

#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "core/log.h"
#include "core/parameters.h"
#include "liveries/livery_matching.h"
#include "liveries/registration_codes.h"
#include "tests/support/log_capture.h"
#include "tests/support/test_liveries.h"

/// An aircraft as the feed tells it.
struct Wanted {
    const char* airline;
    const char* model;
    const char* registration = "";
    bool isCargo = false;
};

inline AircraftRecord aircraftOf(const Wanted& wanted) {
    AircraftRecord aircraft;
    aircraft.callsign = "KLM12";
    aircraft.airline = wanted.airline;
    aircraft.model = wanted.model;
    aircraft.registration = wanted.registration;
    aircraft.isCargo = wanted.isCargo ? 1 : 0;
    aircraft.category = gf_categoryOfType(wanted.model);
    return aircraft;
}

class LiveryMatching : public testing::Test {
public:
    LiveryMatching(const LiveryMatching&) = delete;
    LiveryMatching& operator=(const LiveryMatching&) = delete;
    ~LiveryMatching() override { reset(); }

protected:
    LiveryMatching() {
        reset();
        RANDOM.value = false;
        gCategoryTypes.large = {"A319", "A320", "A321", "B738", "E190", "B39M"};
        gCategoryTypes.heavy = {"B744", "B77W"};
        gCategoryTypes.buzjet = {"C56X", "E135"};
        gCategoryTypes.highPerformance = {"F16"};
        gCategoryTypes.rotorcraft = {"EC35", "R44"};
        gSimilarGroups = {{"A319", "A320", "A321"}, {"DA40", "DA42"}, {"E135", "E190"}};
        DbaseTable.insert("PH-OPR", {"KLM", "A320", "KLM", false});
        DbaseTable.insert("PH-NOO", {"KLM", "A320", "", false});
        DbaseTable.insert("D-SIMI", {"DLH", "A320", "DLH", false});
        DbaseTable.insert("", {"KLM", "A320", "KLM", false});
        install();
    }

    static void reset() {
        clearLiveryTables();
        resetLiveryMatching();
        resetFailedTitles();
        resetReferenceTables();
        resetParameters();
    }

    static void install() {
        installLiveries(
            {
                livery("KLM", "A320", "KLM A320 a"),    livery("KLM", "A320", "KLM A320 b"),
                livery("KLM", "A320", "KLM A320 c"),    livery("KLM", "B744", "KLM B744"),
                freighter("KLM", "B744", "KLM B744 F"), livery("DLH", "A321", "DLH A321"),
                livery("SWR", "A319", "SWR A319"),      livery("SWR", "A321", "SWR A321"),
                livery("GEC", "B744", "GEC B744 pax"),  freighter("FDX", "B77W", "FDX B77W F"),
                livery("EZE", "E135", "EZE E135"),      livery("USA", "F16", "USA F16"),
                livery("TST", "P28A", "TST P28A"),      livery("TST", "DA42", "TST DA42"),
                livery("TST", "C208", "TST C208"),      livery("TST", "EC35", "TST EC35"),
                livery("NJE", "C56X", "NJE C56X"),      livery("PVT", "C210", "PVT C210"),
                livery("ZZZ", "A320", "Generic A320"),  livery("ZZZ", "C172", "Generic C172"),
            },
            [] {
                std::vector<std::string> report;
                lf_mergeRegcodes({{"KLM A320 b", {"PH-UNI"}, true},
                                  {"KLM A320 a", {"PH-TWO", "PH-TOO"}, true},
                                  {"KLM B744", {"PH-BFA"}, false}},
                                 report);
                RegcodeTable[""] = "nobody's";
            });
        summarizeCategories();
    }

    /// "step title" of the last match in the log, or nothing.
    std::string lastMatch() const {
        const auto lines = log.lines();
        const std::string& line = lines.back();
        const std::size_t mark = line.find(" =");
        return mark == std::string::npos ? "" : line.substr(mark + 2, 1) + " " + line.substr(mark + 5);
    }

    std::string live(const Wanted& wanted) {
        ::log("begin");
        AircraftRecord aircraft = aircraftOf(wanted);
        gf_rematchLivery(aircraft);
        EXPECT_EQ(aircraft.liveryTitle.empty(), lastMatch().empty());
        EXPECT_TRUE(aircraft.liveryTitle.empty() ||
                    lastMatch().ends_with(std::string(" ").append(aircraft.liveryTitle)));
        return lastMatch();
    }

    std::string parked(const Wanted& wanted) {
        ::log("begin");
        AircraftRecord aircraft = aircraftOf(wanted);
        aircraft.isCargo = 0;
        const bool isMatched = gf_matchLivery(aircraft, wanted.isCargo);
        EXPECT_EQ(isMatched, !lastMatch().empty());
        EXPECT_EQ(aircraft.liveryTitle.empty(), lastMatch().empty());
        EXPECT_EQ(aircraft.isCargo != 0, wanted.isCargo);
        return lastMatch();
    }

    LogCapture log;
};
