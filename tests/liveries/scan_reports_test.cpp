// tests/liveries/scan_reports_test.cpp
#include "liveries/scan_reports.h"

#include "tests/liveries/scan_test.h"

namespace fs = std::filesystem;

using testing::ElementsAre;
using testing::StartsWith;

namespace {

class Reports : public ScanTest {
protected:
    ScanReports reports_;
};

} // namespace

TEST_F(Reports, nothingToReportIsSaidAndWritesNothing) {
    lf_writeScanReports(reports_);
    EXPECT_THAT(log_.lines(), ElementsAre("", "No errors", "", "Information:"));
    EXPECT_FALSE(fs::exists("output"));
}

TEST_F(Reports, eachListHasItsFileAndItsLine) {
    for (std::size_t i = 0; i < scanReportCount; ++i) {
        reports_.add(static_cast<ScanReport>(i), "line " + std::to_string(i));
    }
    lf_writeScanReports(reports_);
    EXPECT_THAT(
        log_.lines(),
        ElementsAre("", "Errors:", "1 invalid airline code, see output\\errors\\InvalidAirlineCodes.txt",
                    "1 invalid model code, see output\\errors\\InvalidAircraftCodes.txt",
                    "1 code fixes, see output\\errors\\Fixes.txt",
                    "1 invalid aircraft.cfg files, see output\\errors\\InvalidAircraftCfgFiles.txt",
                    "1 incomplete [fltsim.x] sections, see output\\errors\\IncompleFltsimSections.txt", "",
                    "Information:", "1 empty aircraft.cfg files, see output\\info\\AircraftCfgWithNoFltsimSection.txt",
                    "1 liveries updated with real live data from dbase, see "
                    "output\\info\\AirlineModelConversions.txt"));
    EXPECT_EQ(readFile("output/errors/InvalidAirlineCodes.txt"), "line 0\n");
    EXPECT_EQ(readFile("output/errors/InvalidAircraftCodes.txt"), "line 1\n");
    EXPECT_EQ(readFile("output/errors/Fixes.txt"), "line 2\n");
    EXPECT_EQ(readFile("output/errors/InvalidAircraftCfgFiles.txt"), "line 3\n");
    EXPECT_EQ(readFile("output/errors/IncompleFltsimSections.txt"), "line 4\n");
    EXPECT_EQ(readFile("output/info/AircraftCfgWithNoFltsimSection.txt"), "line 5\n");
    EXPECT_EQ(readFile("output/info/AirlineModelConversions.txt"), "line 6\n");
}

TEST_F(Reports, severalCodesHaveAPlural) {
    for (const char* line : {"b", "a"}) {
        reports_.add(ScanReport::invalidAirlineCodes, line);
        reports_.add(ScanReport::invalidModelCodes, line);
    }
    lf_writeScanReports(reports_);
    EXPECT_TRUE(log_.contains("2 invalid airline codes, see output\\errors\\InvalidAirlineCodes.txt"));
    EXPECT_TRUE(log_.contains("2 invalid model codes, see output\\errors\\InvalidAircraftCodes.txt"));
}

TEST_F(Reports, areSortedButForTheFixesAndOnlyIncompleteSectionsLoseDuplicates) {
    for (const char* line : {"b", "a", "b"}) {
        for (std::size_t i = 0; i < scanReportCount; ++i) {
            reports_.add(static_cast<ScanReport>(i), line);
        }
    }
    lf_writeScanReports(reports_);
    for (const char* file :
         {"errors/InvalidAirlineCodes.txt", "errors/InvalidAircraftCodes.txt", "errors/InvalidAircraftCfgFiles.txt",
          "info/AircraftCfgWithNoFltsimSection.txt", "info/AirlineModelConversions.txt"}) {
        EXPECT_EQ(readFile(fs::path("output") / file), "a\nb\nb\n") << file;
    }
    EXPECT_EQ(readFile("output/errors/Fixes.txt"), "b\na\nb\n");
    EXPECT_EQ(readFile("output/errors/IncompleFltsimSections.txt"), "a\nb\n");
    EXPECT_TRUE(log_.contains("2 incomplete [fltsim.x] sections, see output\\errors\\IncompleFltsimSections.txt"));
}

TEST_F(Reports, informationAloneIsNoError) {
    reports_.add(ScanReport::filesWithoutSections, "a");
    lf_writeScanReports(reports_);
    EXPECT_TRUE(log_.contains("No errors"));
    EXPECT_FALSE(fs::exists("output/errors"));
}

TEST_F(Reports, theLinesOfAFileThatCannotBeWrittenStandInTheLog) {
    fs::create_directories("output/errors/Fixes.txt");
    reports_.add(ScanReport::codeFixes, "a");
    lf_writeScanReports(reports_);
    EXPECT_THAT(log_.lines(), ElementsAre("", "Errors:", StartsWith("Error writing file output\\errors\\Fixes.txt: "),
                                          "1 code fixes", "  a", "", "Information:"));
}

TEST_F(Reports, inTheLogEachListStandsBelowItsCountInTheOrderOfItsFile) {
    for (const char* line : {"b", "a", "b"}) {
        reports_.add(ScanReport::codeFixes, line);
        reports_.add(ScanReport::incompleteSections, line);
    }
    reports_.add(ScanReport::invalidModelCodes, "CONC");
    reports_.add(ScanReport::filesWithoutSections, "empty");
    logScanReports(reports_);
    EXPECT_THAT(log_.lines(), ElementsAre("", "Errors:", "1 invalid model code", "  CONC", "3 code fixes", "  b", "  a",
                                          "  b", "2 incomplete [fltsim.x] sections", "  a", "  b", "",
                                          "Information:", "1 empty aircraft.cfg files", "  empty"));
    EXPECT_FALSE(fs::exists("output"));
}

TEST_F(Reports, anOldOneThatCannotBeRemovedIsALineInTheLogAndTheOthersGo) {
    fs::create_directories("output/errors/InvalidAirlineCodes.txt/inside");
    writeFile("output/errors/Fixes.txt", "old");
    writeFile("output/info/AircraftCfgWithNoFltsimSection.txt", "old");
    removeOldReports();
    EXPECT_FALSE(fs::exists("output/errors/Fixes.txt"));
    EXPECT_FALSE(fs::exists("output/info/AircraftCfgWithNoFltsimSection.txt"));
    EXPECT_THAT(log_.errors(),
                ElementsAre(StartsWith("==> Failed to remove output\\errors\\InvalidAirlineCodes.txt (")));
}
