// tests/liveries/livery_scan_test.cpp
#include "liveries/livery_scan.h"

#include <algorithm>
#include <fstream>
#include <thread>

#include "core/user_error.h"
#include "liveries/livery_file.h"
#include "liveries/scan_state.h"
#include "tests/liveries/scan_test.h"
#include "tests/support/eventually.h"
#include "tests/support/message_of.h"
#include "tests/support/sealed_input.h"

namespace fs = std::filesystem;

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::IsSupersetOf;
using testing::StartsWith;

namespace {

class LiveryScan : public ScanTest {
protected:
    /// An A320 with one section of KLM.
    static void makeLivery(const fs::path& folder, std::string_view title) {
        makeAircraft(folder, general("A320") + section(0, "title=" + std::string(title) + "\natc_parking_codes=KLM"));
    }

    static int codeOf(void (*work)()) {
        try {
            work();
        } catch (const kvd::UserErrorException& error) {
            return error.code();
        }
        return 0;
    }

    /// Whether the log has these lines, in this order, among others.
    void expectLinesInOrder(const std::vector<std::string>& expected) const {
        const std::vector<std::string> lines = log_.lines();
        auto from = lines.begin();
        for (const std::string& line : expected) {
            from = std::find(from, lines.end(), line);
            ASSERT_NE(from, lines.end()) << line << " in " << testing::PrintToString(lines);
        }
    }
};

Livery livery(std::string airl, std::string type, std::string title, std::string atcid = {}, std::uint32_t scan = 1,
              bool cargo = false) {
    return {std::move(airl), std::move(type), std::move(title), std::move(atcid), scan, cargo};
}

} // namespace

// --- Folders ---

TEST_F(LiveryScan, withoutAFolderTheUserIsToldToSetOne) {
    EXPECT_EQ(codeOf(gf_scanLiveries), 48);
    EXPECT_EQ(messageOf(gf_scanLiveries), "Exit Tarnwing_P3D first!   Then set one or more lfolder parameters to your "
                                          "liveries, see Manual 5.3");
}

TEST_F(LiveryScan, aFolderThatDoesNotExistIsAnError) {
    fs::create_directories("here");
    setFolder(0, "here");
    setFolder(4, "gone");
    EXPECT_EQ(codeOf(gf_scanLiveries), 243);
    EXPECT_EQ(messageOf(gf_scanLiveries), "the path pointed to by parameter 'lfolder4' does not exist, see Log.txt!");
    EXPECT_THAT(log_.errors(), Contains("==> lfolder4: 'gone' does not exist"));
    EXPECT_TRUE(SCAN_LIVERIES.value);
}

TEST_F(LiveryScan, foldersAreTakenInTheOrderOfTheirParameters) {
    for (const char* folder : {"a", "b", "c"}) {
        fs::create_directories(folder);
    }
    setFolder(9, "a");
    setFolder(0, "b");
    setFolder(5, "c");
    std::vector<fs::path> folders;
    lf_collectLfolders(folders);
    EXPECT_THAT(folders, ElementsAre("b", "c", "a"));
}

TEST_F(LiveryScan, withoutLiveriesThereIsAnErrorAndNoFile) {
    fs::create_directories("empty");
    setFolder(0, "empty");
    EXPECT_EQ(codeOf(gf_scanLiveries), 53);
    EXPECT_EQ(messageOf(gf_scanLiveries), "no liveries found");
    EXPECT_THAT(log_.lines(), Contains("No liveries found in empty"));
    EXPECT_FALSE(fs::exists(scannedLiveriesFile));
    EXPECT_FALSE(fs::exists("output/errors"));
    EXPECT_TRUE(SCAN_LIVERIES.value);
}

TEST_F(LiveryScan, withoutLiveriesTheReasonsStandInTheLog) {
    makeAircraft("x/1", general("CONC") + section(0, "title=One"));
    makeAircraft("x/2", general("A320"));
    setFolder(0, "x");
    EXPECT_EQ(codeOf(gf_scanLiveries), 53);
    expectLinesInOrder({"Errors:", "1 invalid model code", "  CONC             in x\\1\\aircraft.cfg",
                        "Information:", "1 empty aircraft.cfg files", "  x\\2\\aircraft.cfg"});
    EXPECT_FALSE(fs::exists("output"));
}

TEST_F(LiveryScan, whatIsNoFolderIsSkipped) {
    makeLivery("ok/ac", "One");
    writeFile("file", "");
    EXPECT_TRUE(lf_scanFolders({"", "gone", "file", "ok"}));
    EXPECT_THAT(log_.lines(), IsSupersetOf({"gone does not exist, skipped!", "file is not a folder name, skipped!",
                                            "1 liverie found in ok", "1 in total"}));
}

TEST_F(LiveryScan, aTotalIsToldOfSeveralFoldersWithLiveries) {
    makeLivery("ok/ac", "One");
    fs::create_directories("empty");
    lf_scanFolders({"ok"});
    lf_scanFolders({"empty", "empty"});
    EXPECT_FALSE(log_.contains("in total"));
    lf_scanFolders({"ok", "empty"});
    EXPECT_TRUE(log_.contains("1 in total"));
}

TEST_F(LiveryScan, theNumberOfAFolderStopsRisingAtTen) {
    std::vector<fs::path> folders;
    for (const char* folder : {"1", "2", "3", "4", "5", "6", "7", "8", "9", "10", "11"}) {
        fs::create_directories(folder);
        folders.emplace_back(folder);
    }
    makeLivery("10/ac", "ten");
    makeLivery("11/ac", "eleven");
    EXPECT_TRUE(lf_scanFolders(folders));
    EXPECT_THAT(titlesOf(readLiveries()), ElementsAre("eleven", "ten"));
    makeLivery("9/ac", "nine");
    EXPECT_TRUE(lf_scanFolders(folders));
    EXPECT_THAT(titlesOf(readLiveries()), ElementsAre("nine"));
}

// --- A scan as a whole ---

TEST_F(LiveryScan, tellsItsCourseInTheLog) {
    makeLivery("first/ac", "One");
    makeLivery("second/ac", "Two");
    makeLivery("second/ac2", "Three");
    LIG_PRIORITIZE.value = false;
    setFolder(0, "first");
    setFolder(1, "second");
    gf_scanLiveries();
    expectLinesInOrder({"++++++++++++++++++++++++ liveries scan manual starts ++++++++++++++++++++++++++++++++",
                        "1 liverie found in first", "2 liveries found in second", "3 in total",
                        "3 liveries in output\\LiveriesScanned.xml", "No errors", "Information:",
                        "++++++++++++++++++++++++ liveries scan ends ++++++++++++++++++++++++++++++++"});
}

TEST_F(LiveryScan, turnsItselfOffAndFreesItsList) {
    makeLivery("liveries/ac", "One");
    setFolder(0, "liveries");
    gf_scanLiveries();
    EXPECT_FALSE(SCAN_LIVERIES.value);
    EXPECT_THAT(log_.lines(), Contains("SCAN_LIVERIES=false"));
    EXPECT_THAT(Liveries, IsEmpty());
    EXPECT_TRUE(takeNewScan());
    EXPECT_FALSE(takeNewScan());
}

TEST_F(LiveryScan, saysWhetherItIsPrioritized) {
    messageOf(gf_scanLiveries);
    EXPECT_EQ(shownMessage(), "Scanning prioritized for liveries ...");
    LIG_PRIORITIZE.value = false;
    messageOf(gf_scanLiveries);
    EXPECT_EQ(shownMessage(), "Scanning for liveries ...");
}

TEST_F(LiveryScan, writesTheLiveriesByAirlineTypeAndTitle) {
    makeAircraft("x/1", general("B738") + section(0, "title=B\natc_parking_codes=KLM") +
                            section(1, "title=A\natc_parking_codes=KLM") +
                            section(2, "title=C\natc_parking_codes=DLH"));
    makeAircraft("x/2", general("A320") + section(0, "title=D\natc_parking_codes=KLM"));
    EXPECT_TRUE(lf_scanFolders({"x"}));
    EXPECT_THAT(titlesOf(readLiveries()), ElementsAre("C", "D", "A", "B"));
}

TEST_F(LiveryScan, readsIvaoFoldersInTheirOwnWay) {
    makeAircraft("x/IVAO_MTL/IVAO_B738", section(0, "title=B738 DLH"));
    makeAircraft("x/ivao_x-csl/IVAO_B738", section(0, "title=B738 KLM"));
    EXPECT_TRUE(lf_scanFolders({"x"}));
    EXPECT_THAT(titlesOf(readLiveries()), ElementsAre("B738 DLH"));
    EXPECT_EQ(readFile("output/errors/InvalidAircraftCodes.txt"),
              "                 in x\\ivao_x-csl\\IVAO_B738\\aircraft.cfg\n");
}

TEST_F(LiveryScan, aTitleInTwoFilesIsTakenOnce) {
    makeLivery("x/1", "One");
    makeLivery("x/2", "One");
    EXPECT_TRUE(lf_scanFolders({"x"}));
    EXPECT_THAT(titlesOf(readLiveries()), ElementsAre("One"));
    EXPECT_THAT(readFile("output/errors/IncompleFltsimSections.txt"),
                HasSubstr("[fltsim.0] title 'One' already exists"));
    EXPECT_THAT(log_.lines(),
                Contains("1 incomplete [fltsim.x] sections, see output\\errors\\IncompleFltsimSections.txt"));
}

TEST_F(LiveryScan, removesWhatTheLastOneLeftButForTheCorrections) {
    for (const char* name :
         {"errors/InvalidAirlineCodes.txt", "errors/InvalidAircraftCodes.txt", "errors/Fixes.txt",
          "errors/InvalidAircraftCfgFiles.txt", "errors/IncompleFltsimSections.txt", "errors/InlineRegcodes.txt",
          "info/AircraftCfgWithNoFltsimSection.txt", "info/AirlineModelConversions.txt", "LiveriesScanned.xml"}) {
        writeFile(fs::path("output") / name, "old");
    }
    fs::create_directories("empty");
    EXPECT_FALSE(lf_scanFolders({"empty"}));
    EXPECT_FALSE(fs::exists("output/errors"));
    EXPECT_FALSE(fs::exists("output/info/AircraftCfgWithNoFltsimSection.txt"));
    EXPECT_FALSE(fs::exists(scannedLiveriesFile));
    EXPECT_EQ(readFile("output/info/AirlineModelConversions.txt"), "old");
}

TEST_F(LiveryScan, leavesReportsOfOthersInTheirFolder) {
    writeFile("output/errors/Others.txt", "kept");
    fs::create_directories("empty");
    EXPECT_FALSE(lf_scanFolders({"empty"}));
    EXPECT_EQ(readFile("output/errors/Others.txt"), "kept");
}

TEST_F(LiveryScan, aReportThatCannotBeRemovedDoesNotStopIt) {
    makeLivery("liveries/ac", "One");
    setFolder(0, "liveries");
    fs::create_directories("output/errors/Fixes.txt/inside");
    gf_scanLiveries();
    EXPECT_THAT(titlesOf(readLiveries()), ElementsAre("One"));
    EXPECT_FALSE(SCAN_LIVERIES.value);
}

TEST_F(LiveryScan, aFileThatCannotBeWrittenLeavesTheScanToBeDone) {
    makeLivery("liveries/ac", "One");
    setFolder(0, "liveries");
    fs::create_directories("output/LiveriesScanned.xml.new/inside");
    EXPECT_THAT(messageOf(gf_scanLiveries), HasSubstr("Error writing file output\\LiveriesScanned.xml: "));
    EXPECT_TRUE(SCAN_LIVERIES.value);
    EXPECT_THAT(Liveries, IsEmpty());
}

TEST_F(LiveryScan, whyLiveriesWereRefusedIsToldAlsoWhenTheirFileCannotBeWritten) {
    makeLivery("liveries/ac", "One");
    makeAircraft("liveries/no_type", section(0, "title=Two"));
    fs::create_directories("output/LiveriesScanned.xml.new/inside");
    EXPECT_ANY_THROW(lf_scanFolders({"liveries"}));
    EXPECT_TRUE(log_.contains("1 invalid aircraft.cfg files"));
    EXPECT_TRUE(log_.contains("  Line atc_model= is missing in [General] section of liveries\\no_type\\aircraft.cfg"));
}

TEST_F(LiveryScan, aFileThatIsRefusedDoesNotStopTheOthers) {
    makeLivery("x/ok", "One");
    makeAircraft("x/no_text", std::string("\0", 1));
    makeAircraft("x/no_type", section(0, "title=Two"));
    EXPECT_TRUE(lf_scanFolders({"x"}));
    EXPECT_THAT(titlesOf(readLiveries()), ElementsAre("One"));
}

// --- Titles that must not be used ---

TEST_F(LiveryScan, aTitleThatStandsAloneInALineOfTheUserIsLeftOut) {
    makeLivery("x/1", "Good");
    makeLivery("x/2", "Bad");
    writeFile("input/my_regcodes/own.txt", "Bad\n");
    EXPECT_TRUE(lf_scanFolders({"x"}));
    EXPECT_THAT(titlesOf(readLiveries()), ElementsAre("Good"));
    EXPECT_FALSE(fs::exists("output/errors")) << "it is no fault";
    fs::remove("input/my_regcodes/own.txt");
    EXPECT_TRUE(lf_scanFolders({"x"}));
    EXPECT_THAT(titlesOf(readLiveries()), ElementsAre("Bad", "Good"));
}

TEST_F(LiveryScan, aTitleOfTheAigFileWithoutRegistrationsIsLeftOut) {
    makeLivery("x/1", "Good");
    makeLivery("x/2", "Bad");
    writeSealed("input/AIG-regcodes.enc",
                R"(<root><meta/><AIG-regcodes><livery title="Bad"/><livery title="Good" reg=","/>)"
                R"(</AIG-regcodes></root>)");
    EXPECT_TRUE(lf_scanFolders({"x"}));
    EXPECT_THAT(titlesOf(readLiveries()), ElementsAre("Good"));
}

TEST_F(LiveryScan, aMachineThatDoesNotTellItsThreadsIsScannedWithOne) {
    gHardwareThreads = 0;
    for (const char* title : {"One", "Two", "Three"}) {
        makeLivery(std::filesystem::path("liveries") / title, title);
    }
    EXPECT_TRUE(lf_scanFolders({"liveries"}));
    EXPECT_THAT(titlesOf(readLiveries()), testing::UnorderedElementsAre("One", "Two", "Three"));
}

TEST_F(LiveryScan, theWindowDoesNotTellOfItAnyMore) {
    makeLivery("liveries/ac", "One");
    setFolder(0, "liveries");
    gf_scanLiveries();
    EXPECT_EQ(shownMessage(), "");
}

// --- Stopping ---

TEST_F(LiveryScan, aStopLeavesNoFileAndTurnsTheScanOff) {
    makeLivery("liveries/ac", "One");
    setFolder(0, "liveries");
    writeFile(scannedLiveriesFile, "old");
    gf_stopRun(ExitReason::newSettings, 0);
    gf_scanLiveries();
    EXPECT_FALSE(fs::exists(scannedLiveriesFile));
    EXPECT_FALSE(SCAN_LIVERIES.value);
    EXPECT_THAT(Liveries, IsEmpty());
    EXPECT_EQ(codeOf([] { lf_readLiveries(); }), 51);
}

/// Else the next start would take the old result for that of this scan.
TEST_F(LiveryScan, aStopThatLeavesAnOldResultBehindLeavesTheScanToBeDone) {
    makeLivery("liveries/ac", "One");
    setFolder(0, "liveries");
    fs::create_directories("output/LiveriesScanned.xml/inside");
    gf_stopRun(ExitReason::newSettings, 0);
    gf_scanLiveries();
    EXPECT_TRUE(SCAN_LIVERIES.value);
    EXPECT_THAT(log_.errors(), Contains(StartsWith("==> Failed to remove output\\LiveriesScanned.xml (")));
    fs::remove_all("output/LiveriesScanned.xml");
    gf_scanLiveries();
    EXPECT_FALSE(SCAN_LIVERIES.value);
}

TEST_F(LiveryScan, theCloseButtonStopsIt) {
    makeLivery("liveries/ac", "One");
    gf_userCloses();
    EXPECT_TRUE(lf_scanFolders({"liveries"}));
    EXPECT_FALSE(fs::exists(scannedLiveriesFile));
}

TEST_F(LiveryScan, inProductionModeOnlyTheCloseButtonStopsIt) {
    makeLivery("liveries/ac", "One");
    gProductionMode = true;
    gf_userCloses();
    EXPECT_TRUE(lf_scanFolders({"liveries"}));
    EXPECT_TRUE(fs::exists(scannedLiveriesFile));
    gCloseButtonUsed = true;
    EXPECT_TRUE(lf_scanFolders({"liveries"}));
    EXPECT_FALSE(fs::exists(scannedLiveriesFile));
}

// --- What is done with the list ---

TEST_F(LiveryScan, aLowerFolderWinsAnAirlineAndTypeWholesale) {
    makeLivery("low/ac", "One");
    makeAircraft("high/ac", general("A320") + section(0, "title=Two\natc_parking_codes=KLM") +
                                section(1, "title=Three\natc_parking_codes=DLH"));
    EXPECT_TRUE(lf_scanFolders({"low", "high"}));
    EXPECT_THAT(titlesOf(readLiveries()), ElementsAre("Three", "One"));
    LIG_PRIORITIZE.value = false;
    EXPECT_TRUE(lf_scanFolders({"low", "high"}));
    EXPECT_THAT(titlesOf(readLiveries()), ElementsAre("Three", "One", "Two"));
}

TEST_F(LiveryScan, whatTheDataBaseMakesOfALiveryCountsForThePriorities) {
    DbaseTable.insert("PH-COR", {"KLM", "A320", {}, false});
    makeLivery("low/ac", "One");
    makeAircraft("high/ac", general("B738") + section(0, "title=Two\natc_parking_codes=DLH\natc_id=PH-COR") +
                                section(1, "title=Three\natc_parking_codes=DLH"));
    EXPECT_TRUE(lf_scanFolders({"low", "high"}));
    EXPECT_THAT(titlesOf(readLiveries()), ElementsAre("Three", "One"));
}

TEST_F(LiveryScan, prioritizingKeepsWhatOnlyAHigherFolderHasAndAllOfOneFolder) {
    std::list<Livery> list{livery("KLM", "A320", "a", "", 2), livery("KLM", "A320", "b", "", 2),
                           livery("KLM", "A320", "c", "", 3), livery("KLM", "B738", "d", "", 3),
                           livery("KLM", "A320", "e", "", 1)};
    prioritize(list);
    EXPECT_THAT(titlesOf(list), ElementsAre("a", "b", "d", "e"));
}

TEST_F(LiveryScan, ofEqualRecordsOneStaysAndThoseOfOtherRegistrationsToo) {
    std::list<Livery> list{livery("KLM", "A320", "a", "X"), livery("KLM", "A320", "a", "Y"),
                           livery("KLM", "A320", "a", "Y", 2), livery("DLH", "A320", "b")};
    sortLiveries(list);
    EXPECT_THAT(list, ElementsAre(livery("DLH", "A320", "b"), livery("KLM", "A320", "a", "X"),
                                  livery("KLM", "A320", "a", "Y")));
}

TEST_F(LiveryScan, theDataBaseCorrectsCargoAirlineAndType) {
    std::list<Livery> list{livery("DLH", "A320", "one", "PH-BCA"), livery("AUA", "B738", "two", "D-AIDA")};
    ScanReports reports;
    lf_updateFromDbase(list, reports);
    EXPECT_THAT(list,
                ElementsAre(livery("KLM", "B744", "one", "PH-BCA", 1, true), livery("DLH", "A320", "two", "D-AIDA")));
    const std::string pad(77, ' ');
    EXPECT_THAT(reports.lines(ScanReport::corrections),
                ElementsAre("one" + pad + " PH-BCA cargo false => true", "one" + pad + " PH-BCA airl DLH => KLM",
                            "one" + pad + " PH-BCA model A320 => B744", "two" + pad + " D-AIDA airl AUA => DLH",
                            "two" + pad + " D-AIDA model B738 => A320"));
}

TEST_F(LiveryScan, whatTheDataBaseDoesNotTellStays) {
    std::list<Livery> list{livery("PVT", "C172", "one", "D-ECAR"), livery("KLM", "A320", "two", "unknown"),
                           livery("KLM", "A320", "three")};
    ScanReports reports;
    lf_updateFromDbase(list, reports);
    EXPECT_THAT(list, ElementsAre(livery("PVT", "C172", "one", "D-ECAR"), livery("KLM", "A320", "two", "unknown"),
                                  livery("KLM", "A320", "three")));
    EXPECT_THAT(reports.lines(ScanReport::corrections), IsEmpty());
}

TEST_F(LiveryScan, correctionsGoToTheirFile) {
    makeAircraft("x/ac", general("A320") + section(0, "title=One\natc_parking_codes=DLH\natc_id=PH-BXA"));
    EXPECT_TRUE(lf_scanFolders({"x"}));
    EXPECT_THAT(readFile("output/info/AirlineModelConversions.txt"), HasSubstr(" PH-BXA airl DLH => KLM\n"));
    EXPECT_THAT(log_.lines(), Contains("2 liveries updated with real live data from dbase, see "
                                       "output\\info\\AirlineModelConversions.txt"));
}
