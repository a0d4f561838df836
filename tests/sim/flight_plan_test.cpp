#include "sim/flight_plan.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "platform/files.h"
#include "tests/support/log_capture.h"
#include "tests/support/temporary_folder.h"

namespace fs = std::filesystem;

namespace {

class FlightPlan : public testing::Test {
protected:
    FlightPlan() : folder(platform::roamingAppDataFolder() / "Tarnwing_P3D" / "orig_dest") {}
    ~FlightPlan() override { gf_removeFlightPlanFolder(); }

    static AircraftRecord flight(AircraftCategory category) {
        AircraftRecord aircraft;
        aircraft.hexid = 4921892;
        aircraft.category = category;
        aircraft.origin = "LSZH";
        aircraft.destination = "EGLL";
        return aircraft;
    }

    TemporaryFolder workingFolder;
    LogCapture log;
    fs::path folder;
};

TEST_F(FlightPlan, theFileHoldsRulesAndBothAirports) {
    ASSERT_TRUE(gf_createFlightPlanFolder());
    const fs::path path = gf_flightPlanFor(flight(AircraftCategory::Buzjets));
    EXPECT_EQ(path, folder / "4921892.pln");
    EXPECT_EQ(readFile(path), "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                              "<SimBase.Document Type=\"AceXML\" version=\"4,3\">\n"
                              "<FlightPlan.FlightPlan>\n"
                              "<FPType>IFR</FPType>\n"
                              "<DepartureID>LSZH</DepartureID>\n"
                              "<DestinationID>EGLL</DestinationID>\n"
                              "</FlightPlan.FlightPlan>\n"
                              "</SimBase.Document>\n"
                              "\n");
}

TEST_F(FlightPlan, airlinersAndBusinessJetsFlyByInstrumentsTheOthersBySight) {
    ASSERT_TRUE(gf_createFlightPlanFolder());
    const auto rules = [](AircraftCategory category) {
        const std::string text = readFile(gf_flightPlanFor(flight(category)));
        return text.substr(text.find("<FPType>") + 8, 3);
    };
    EXPECT_EQ(rules(AircraftCategory::Buzjets), "IFR");
    EXPECT_EQ(rules(AircraftCategory::Large), "IFR");
    EXPECT_EQ(rules(AircraftCategory::Heavy), "IFR");
    EXPECT_EQ(rules(AircraftCategory::Light), "VFR");
    EXPECT_EQ(rules(AircraftCategory::HighPerf), "VFR");
    EXPECT_EQ(rules(AircraftCategory::Rotorcraft), "VFR");
}

TEST_F(FlightPlan, anAircraftWithoutBothAirportsGetsNoFile) {
    ASSERT_TRUE(gf_createFlightPlanFolder());
    AircraftRecord aircraft = flight(AircraftCategory::Large);
    aircraft.destination.clear();
    EXPECT_EQ(gf_flightPlanFor(aircraft), fs::path());
    aircraft = flight(AircraftCategory::Large);
    aircraft.origin.clear();
    EXPECT_EQ(gf_flightPlanFor(aircraft), fs::path());
    EXPECT_TRUE(fs::is_empty(folder));
}

TEST_F(FlightPlan, aFileThatCannotBeWrittenGivesNoPath) {
    ASSERT_TRUE(gf_createFlightPlanFolder());
    fs::create_directory(folder / "4921892.pln");
    EXPECT_EQ(gf_flightPlanFor(flight(AircraftCategory::Large)), fs::path());
    EXPECT_FALSE(lf_writeFlightPlan(folder / "missing" / "1.pln", flight(AircraftCategory::Large)));
    fs::remove(folder / "4921892.pln");
}

TEST_F(FlightPlan, theFileGoesWithItsAircraft) {
    ASSERT_TRUE(gf_createFlightPlanFolder());
    const fs::path path = gf_flightPlanFor(flight(AircraftCategory::Large));
    gf_removeFlightPlan(4921892);
    EXPECT_FALSE(fs::exists(path));
    gf_removeFlightPlan(4921892);
    EXPECT_TRUE(log.lines().empty()) << "what is gone already is no failure";
}

TEST_F(FlightPlan, aFileThatCannotBeRemovedIsALogLine) {
    ASSERT_TRUE(gf_createFlightPlanFolder());
    writeFile(folder / "7.pln" / "inside", "x");
    gf_removeFlightPlan(7);
    ASSERT_EQ(log.lines().size(), 1U);
    EXPECT_EQ(log.lines()[0].find("gf_removeFlightPlan: "), 0U);
    fs::remove_all(folder / "7.pln");
}

TEST_F(FlightPlan, closingWithFilesInTheFolderRemovesThemAndTheFolder) {
    ASSERT_TRUE(gf_createFlightPlanFolder());
    gf_flightPlanFor(flight(AircraftCategory::Large));
    gf_removeFlightPlanFolder();
    EXPECT_FALSE(fs::exists(folder));
    EXPECT_TRUE(fs::exists(folder.parent_path())) << "the settings live there";
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(FlightPlan, whatARunThatWasKilledHasLeftGoesWithTheFolder) {
    writeFile(folder / "1.pln", "x");
    writeFile(folder / "notes.txt", "x");
    ASSERT_TRUE(gf_createFlightPlanFolder());
    gf_removeFlightPlanFolder();
    EXPECT_FALSE(fs::exists(folder));
}

TEST_F(FlightPlan, aFolderThatThisRunHasNotMadeIsNotRemoved) {
    fs::create_directories(folder);
    gf_removeFlightPlanFolder();
    EXPECT_TRUE(fs::exists(folder));
    fs::remove(folder);
}

TEST_F(FlightPlan, withoutAFolderNothingIsWrittenOrRemoved) {
    writeFile("7.pln", "the user's own");
    gf_removeFlightPlan(7);
    EXPECT_TRUE(fs::exists("7.pln"));
    EXPECT_EQ(gf_flightPlanFor(flight(AircraftCategory::Large)), fs::path());
    EXPECT_FALSE(fs::exists("4921892.pln"));
}

TEST_F(FlightPlan, anAirportThatIsNoCodeGivesNoFile) {
    ASSERT_TRUE(gf_createFlightPlanFolder());
    for (const char* origin : {"A&B", "<X>", "\xc4", "LS ZH", "\""}) {
        AircraftRecord aircraft = flight(AircraftCategory::Large);
        aircraft.origin = origin;
        EXPECT_EQ(gf_flightPlanFor(aircraft), fs::path()) << origin;
    }
}

TEST_F(FlightPlan, anEmptyFolderIsRemovedAndNoneIsNoFailure) {
    ASSERT_TRUE(gf_createFlightPlanFolder());
    gf_removeFlightPlanFolder();
    EXPECT_FALSE(fs::exists(folder));
    gf_removeFlightPlanFolder();
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(FlightPlan, aFolderThatCannotBeRemovedIsALogLine) {
    ASSERT_TRUE(gf_createFlightPlanFolder());
    fs::create_directories(folder / "sub");
    gf_removeFlightPlanFolder();
    ASSERT_FALSE(log.lines().empty());
    EXPECT_EQ(log.lines().back().find("gf_removeFlightPlanFolder: "), 0U);
}

TEST_F(FlightPlan, aFolderThatCannotBeMadeIsALogLineAndNo) {
    writeFile(platform::roamingAppDataFolder() / "Tarnwing_P3D", "a file where a folder should be");
    EXPECT_FALSE(gf_createFlightPlanFolder());
    ASSERT_FALSE(log.lines().empty());
    EXPECT_EQ(log.lines()[0].find("gf_createFlightPlanFolder: "), 0U);
}

} // namespace
