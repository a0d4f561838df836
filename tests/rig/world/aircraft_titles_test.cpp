#include "rig/world/aircraft_titles.h"

#include <gtest/gtest.h>

#include "tests/support/temporary_folder.h"

using namespace rig;

namespace {

constexpr const char* airlinerFile = R"(; Boeing
[fltsim.0]
title = Airliner KLM
sim = b738
[Fltsim.1]
TITLE="Airliner, Transavia"
[fltsim.x]
texture=none
[General]
atc_model = B738 // as the tower says
[Contact_Points]
static_pitch = -0.8
static_cg_height = 6.2 // feet
[airplane_geometry]
wing_span = 112.5 //Feet
)";

} // namespace

TEST(AircraftTitles, eachFlightSectionHasATitleAndAllShareTheRest) {
    const TemporaryFolder folder;
    writeFile("SimObjects/Airplanes/B738/Aircraft.cfg", airlinerFile);
    AircraftTitles titles;
    titles.addFolder("SimObjects");
    EXPECT_EQ(titles.count(), 2u);
    for (const char* title : {"Airliner KLM", "Airliner, Transavia"}) {
        const AircraftType* type = titles.find(title);
        ASSERT_NE(type, nullptr) << title;
        EXPECT_EQ(type->title, title);
        EXPECT_EQ(type->model, "B738");
        EXPECT_EQ(type->cgHeightFeet, 6.2);
        EXPECT_NEAR(type->staticPitchRad, -0.8 * radiansPerDegree, 1e-12);
        EXPECT_EQ(type->wingSpanFeet, 112.5);
    }
}

TEST(AircraftTitles, whatIsNotSaidHasAnOrdinaryValue) {
    AircraftTitles titles;
    titles.addLines({"[fltsim.0]", "title=Plain", "[contact_points]", "static_cg_height = high"});
    const AircraftType* type = titles.find("Plain");
    ASSERT_NE(type, nullptr);
    EXPECT_EQ(type->model, "");
    EXPECT_EQ(type->cgHeightFeet, AircraftType().cgHeightFeet);
    EXPECT_EQ(type->wingSpanFeet, AircraftType().wingSpanFeet);
}

TEST(AircraftTitles, linesWithoutSenseAreLeftOut) {
    AircraftTitles titles;
    titles.addLines({"title=Before any section", "[", "[fltsim.", "title=Half a section", "[fltsim]", "title=No number",
                     "[fltsim.3]", ";title=Comment", "title=", "title", "[other]", "title=Other", "=", ""});
    EXPECT_EQ(titles.count(), 0u);
}

TEST(AircraftTitles, aTitleIsFoundWholeAndAsItIsWritten) {
    AircraftTitles titles;
    titles.addLines({"[fltsim.0]", "title=Airliner"});
    EXPECT_EQ(titles.find("airliner"), nullptr);
    EXPECT_EQ(titles.find("Airline"), nullptr);
    EXPECT_EQ(titles.find(""), nullptr);
}

TEST(AircraftTitles, onlyFilesOfThatNameCount) {
    const TemporaryFolder folder;
    writeFile("A/aircraft.txt", "[fltsim.0]\ntitle=No\n");
    writeFile("A/my aircraft.cfg", "[fltsim.0]\ntitle=No\n");
    writeFile("A/AIRCRAFT.CFG", "[fltsim.0]\ntitle=Yes\n");
    writeFile("A/B/C/aircraft.cfg", "[fltsim.0]\ntitle=Deep\n");
    writeFile("A/D/aircraft.cfg", "");
    std::filesystem::create_directories("A/E/aircraft.cfg");
    AircraftTitles titles;
    titles.addFolder("A");
    EXPECT_EQ(titles.count(), 2u);
    EXPECT_NE(titles.find("Yes"), nullptr);
    EXPECT_NE(titles.find("Deep"), nullptr);
}

TEST(AircraftTitles, aFolderThatIsNotThereHasNone) {
    const TemporaryFolder folder;
    AircraftTitles titles;
    titles.addFolder("nowhere");
    EXPECT_EQ(titles.count(), 0u);
}

TEST(AircraftTitles, filesOfRealAddOnsAreRead) {
    if (!std::filesystem::is_directory("../shared/data/liveries")) {
        GTEST_SKIP() << "no real aircraft.cfg files here";
    }
    AircraftTitles titles;
    titles.addFolder("../shared/data/liveries");
    const AircraftType* fighter = titles.find("MAIW_NBAI_T1_SAF Ala14 CE-16 11");
    ASSERT_NE(fighter, nullptr);
    EXPECT_EQ(fighter->model, "Typhoon");
    EXPECT_EQ(fighter->cgHeightFeet, 6.2);
    EXPECT_EQ(fighter->wingSpanFeet, 45.8);
}
