#include "liveries/registration_codes.h"

#include <filesystem>

#include <gmock/gmock.h>

#include <fmt/format.h>

#include "liveries/livery_matching.h"
#include "liveries/reference_tables.h"
#include "tests/support/allocation_count.h"
#include "tests/support/damaged_containers.h"
#include "tests/support/log_capture.h"
#include "tests/support/sealed_input.h"
#include "tests/support/test_liveries.h"
#include "window/window_state.h"

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::Pair;
using testing::UnorderedElementsAre;

namespace fs = std::filesystem;

namespace {

std::string pathText(const fs::path& path) {
    return fs::path(path).make_preferred().string();
}

class RegistrationCodes : public testing::Test {
public:
    RegistrationCodes(const RegistrationCodes&) = delete;
    RegistrationCodes& operator=(const RegistrationCodes&) = delete;
    ~RegistrationCodes() override { reset(); }

protected:
    RegistrationCodes() {
        reset();
        fs::create_directories("input/my_regcodes");
        buildAirlineTables(
            {livery("KLM", "A320", "One"), livery("KLM", "A320", "Two"), livery("KLM", "A320", "Three")});
    }

    static void takeSections(const std::vector<LiveryView>& liveries) { gf_processInlineRegcodes(liveries); }

    static void reset() {
        clearLiveryTables();
        resetReferenceTables();
        resetRegistrationCodes();
        resetWindowState();
    }

    static void giveAig(const std::string& elements, const char* meta = "<meta/>") {
        writeSealed("input/AIG-regcodes.enc",
                    fmt::format("<root>{}<AIG-regcodes>{}</AIG-regcodes></root>", meta, elements));
    }

    static void giveOwn(std::string_view text) { writeFile("input/my_regcodes/own.txt", text); }

    static std::string offlineReport() { return readFile("output/info/OfflineRegcodes.txt"); }

    LogCapture log;
};

// Titles that must not be used

TEST_F(RegistrationCodes, titlesWithoutRegistrationsAreNotToBeUsed) {
    giveAig(R"(<livery title="Bad 1"/><livery title="Good" reg="PH-ABC"/><livery title="Bad 2" reg=""/>)");
    giveOwn("Bad 3\nGood 2;PH-DEF\n");
    gf_loadDontUseTitles();
    EXPECT_THAT(DontUseTitles, ElementsAre("Bad 1", "Bad 2", "Bad 3"));
    EXPECT_TRUE(log.contains("2 don't use titles read"));
    EXPECT_TRUE(log.contains(fmt::format("1 don't use title read from files in {}", pathText("input/my_regcodes"))));
    EXPECT_THAT(OfflineReport, IsEmpty());
    EXPECT_FALSE(fs::exists("input/AIG-regcodes.xml"));
}

TEST_F(RegistrationCodes, theyAreReadAnewForEachScan) {
    giveOwn("Bad\n");
    gf_loadDontUseTitles();
    gf_loadDontUseTitles();
    EXPECT_THAT(DontUseTitles, ElementsAre("Bad"));
    EXPECT_THAT(log.lines(), Not(Contains(testing::HasSubstr("read from AIG"))));
}

TEST_F(RegistrationCodes, whatAFormerScanComplainedOfIsNotReportedAgain) {
    writeFile("input/my_regcodes/own.txt", std::string_view("\0", 1));
    gf_loadDontUseTitles();
    ASSERT_EQ(OfflineReport.size(), 1U);
    giveOwn("Bad\n");
    gf_loadDontUseTitles();
    EXPECT_THAT(OfflineReport, IsEmpty());
}

TEST_F(RegistrationCodes, faultsOfTheFilesStandInTheNextReport) {
    giveAig(R"(<livery title="Bad"/><livery title="Bad"/>)");
    writeFile("input/my_regcodes/own.txt", std::string_view("\0", 1));
    gf_loadDontUseTitles();
    EXPECT_THAT(DontUseTitles, ElementsAre("Bad"));
    EXPECT_THAT(OfflineReport,
                ElementsAre("There were errors in processing the file 'AIG-regcodes.xml', see the Log.txt",
                            fmt::format("There were errors in processing the regcode files in folder '{}', see the "
                                        "Log.txt",
                                        pathText("input/my_regcodes"))));
    gf_processOfflineRegcodes();
    EXPECT_THAT(offlineReport(), testing::StartsWith("There were errors in processing the file"));
    EXPECT_THAT(OfflineReport, IsEmpty());
}

TEST_F(RegistrationCodes, withoutAnyFileNothingIsBarred) {
    fs::remove_all("input");
    gf_loadDontUseTitles();
    EXPECT_THAT(DontUseTitles, IsEmpty());
    EXPECT_THAT(OfflineReport, IsEmpty());
}

TEST_F(RegistrationCodes, barringATitleDoesNothingToTheTables) {
    giveOwn("One\n");
    gf_processOfflineRegcodes();
    EXPECT_THAT(RegcodeTable, IsEmpty());
    EXPECT_THAT(ReservedTitles, IsEmpty());
    EXPECT_EQ(lf_findTitle("One"), "One");
}

// In-line registrations

TEST_F(RegistrationCodes, theSectionsRegistrationsAreTaken) {
    takeSections({{.airl = "KLM", .type = "A320", .title = "One", .atcid = "PH-ABC"},
                  {.airl = "KLM", .type = "A320", .title = "Two", .atcid = ""},
                  {.airl = "KLM", .type = "A320", .title = "One", .atcid = "PH-ABC"}});
    EXPECT_THAT(RegcodeTable, UnorderedElementsAre(Pair("PH-ABC", "One")));
    EXPECT_FALSE(fs::exists("output/errors"));
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(RegistrationCodes, amongSectionsTheFirstTitleStays) {
    takeSections({{.airl = "KLM", .type = "A320", .title = "One", .atcid = "PH-ABC"},
                  {.airl = "KLM", .type = "A320", .title = "Two", .atcid = "PH-ABC"},
                  {.airl = "KLM", .type = "H60", .title = "Lost", .atcid = "PH-DEF"}});
    EXPECT_THAT(RegcodeTable, UnorderedElementsAre(Pair("PH-ABC", "One")));
    EXPECT_EQ(readFile("output/errors/InlineRegcodes.txt"),
              "PH-ABC 'Two' => already in use by 'One'\n"
              "==> [KLM H60 ] PH-DEF 'Lost' not available, system error, should not happen?\n");
    EXPECT_THAT(log.lines(), ElementsAre(fmt::format("2 in-line regcode clashes, see '{}'",
                                                     pathText("output/errors/InlineRegcodes.txt"))));
}

// Merging

TEST_F(RegistrationCodes, aLaterSourceReplacesAnEarlierOneAndALaterEntryToo) {
    RegcodeTable["PH-ABC"] = lf_findTitle("One");
    std::vector<std::string> report;
    lf_mergeRegcodes({{"Two", {"PH-ABC"}, false}, {"Three", {"PH-ABC", "PH-DEF"}, false}}, report);
    EXPECT_THAT(RegcodeTable, UnorderedElementsAre(Pair("PH-ABC", "Three"), Pair("PH-DEF", "Three")));
    EXPECT_THAT(report, ElementsAre("   regcode PH-ABC for 'Two', instead of the same for 'One'",
                                    "   regcode PH-ABC for 'Three', instead of the same for 'Two'",
                                    "1 new regcode added, 2 regcodes replaced"));
}

TEST_F(RegistrationCodes, theSameTitleAgainIsNoChange) {
    RegcodeTable["PH-ABC"] = lf_findTitle("One");
    std::vector<std::string> report;
    lf_mergeRegcodes({{"One", {"PH-ABC"}, false}}, report);
    EXPECT_THAT(report, ElementsAre("0 new regcodes added"));
}

TEST_F(RegistrationCodes, anEntryForATitleThatTheUserHasNotDoesNothing) {
    std::vector<std::string> report;
    lf_mergeRegcodes({{"Four", {"PH-ABC"}, true}, {"", {"PH-DEF"}, true}}, report);
    EXPECT_THAT(RegcodeTable, IsEmpty());
    EXPECT_THAT(SpecialRegcodes, IsEmpty());
    EXPECT_THAT(ReservedTitles, IsEmpty());
    EXPECT_THAT(report, ElementsAre("0 new regcodes added"));
}

TEST_F(RegistrationCodes, specialEntriesReserveTheirTitles) {
    std::vector<std::string> report;
    lf_mergeRegcodes({{"One", {"PH-ABC"}, true}, {"Two", {"PH-DEF", "PH-GHI"}, true}, {"Three", {"PH-JKL"}, false}},
                     report);
    EXPECT_THAT(SpecialRegcodes, ElementsAre("PH-ABC", "PH-DEF", "PH-GHI"));
    EXPECT_THAT(UniqueRegcodes, ElementsAre("PH-ABC"));
    EXPECT_THAT(ReservedTitles, ElementsAre("One", "Two"));
    EXPECT_THAT(report, ElementsAre("4 new regcodes added, 2 regcodes defined as special"));
}

TEST_F(RegistrationCodes, oneOfEachIsSingular) {
    RegcodeTable["PH-ABC"] = lf_findTitle("One");
    std::vector<std::string> report;
    lf_mergeRegcodes({{"Two", {"PH-ABC", "PH-DEF"}, true}}, report);
    EXPECT_EQ(report.back(), "1 new regcode added, 1 regcode replaced, 1 regcode defined as special");
}

// The offline files

TEST_F(RegistrationCodes, theUsersFilesWinOverTheAigFileAndThatOverTheSections) {
    takeSections({{.airl = "KLM", .type = "A320", .title = "One", .atcid = "PH-ABC"},
                  {.airl = "KLM", .type = "A320", .title = "One", .atcid = "PH-DEF"}});
    giveAig(R"(<livery title="Two" reg="PH-ABC,PH-DEF"/>)");
    giveOwn("Three;PH-ABC\n");
    gf_processOfflineRegcodes();
    EXPECT_THAT(RegcodeTable, UnorderedElementsAre(Pair("PH-ABC", "Three"), Pair("PH-DEF", "Two")));
    EXPECT_EQ(offlineReport(), fmt::format("Processing file AIG-regcodes.xml\n"
                                           "   regcode PH-ABC for 'Two', instead of the same for 'One'\n"
                                           "   regcode PH-DEF for 'Two', instead of the same for 'One'\n"
                                           "0 new regcodes added, 2 regcodes replaced\n"
                                           "Processing files in {}\n"
                                           "   regcode PH-ABC for 'Three', instead of the same for 'Two'\n"
                                           "0 new regcodes added, 1 regcode replaced, 1 regcode defined as special\n",
                                           pathText("input/my_regcodes")));
    EXPECT_TRUE(log.contains(fmt::format("Offline regcode files processed, results can be found in '{}'",
                                         pathText("output/info/OfflineRegcodes.txt"))));
    EXPECT_TRUE(log.contains("1 special liveries"));
    EXPECT_TRUE(log.contains("1 unique liveries"));
    EXPECT_FALSE(fs::exists("input/AIG-regcodes.xml"));
    EXPECT_EQ(shownMessage(), "");
}

TEST_F(RegistrationCodes, aLineWithOneRegistrationReservesTheTitleForIt) {
    giveOwn("Two;PH-ABC\n");
    gf_processOfflineRegcodes();
    lf_buildModelTables();
    EXPECT_THAT(AirlineModelTable[passengerIndex].at("KLM").at("A320").candidates(), ElementsAre("One", "Three"));
    EXPECT_TRUE(UniqueRegcodes.contains("PH-ABC"));
}

TEST_F(RegistrationCodes, aFaultyAigFileIsMergedAsFarAsItWasRead) {
    giveAig(R"(<livery title="One" reg="PH-ABC"/><livery title="One" reg="PH-DEF"/>)");
    gf_processOfflineRegcodes();
    EXPECT_THAT(RegcodeTable, UnorderedElementsAre(Pair("PH-ABC", "One")));
    EXPECT_EQ(offlineReport(), "Processing file AIG-regcodes.xml\n"
                               "There were errors processing the AIG-regcode file 'AIG-regcodes.xml', see Log.txt\n"
                               "1 new regcode added\n");
    EXPECT_THAT(log.lines(), Not(Contains(testing::EndsWith("special liveries"))));
    EXPECT_EQ(shownMessage(), "") << "it is not the user's file";
}

TEST_F(RegistrationCodes, faultyFilesOfTheUserAreShown) {
    giveOwn(std::string_view("\0", 1));
    gf_processOfflineRegcodes();
    EXPECT_EQ(shownMessage(), fmt::format("There were errors processing the regcode files in folder '{}', see Log.txt",
                                          pathText("input/my_regcodes")));
    EXPECT_THAT(offlineReport(), testing::HasSubstr(shownMessage()));
}

TEST_F(RegistrationCodes, aFolderThatCannotBeReadDoesNotCostTheRest) {
    fs::remove_all("input");
    writeFile("input/my_regcodes", "not a folder");
    giveAig(R"(<livery title="One" reg="PH-ABC" special="true"/>)");
    gf_processOfflineRegcodes();
    const std::string folder = pathText("input/my_regcodes");
    const std::string fault =
        fmt::format("There were errors processing the regcode files in folder '{}', see Log.txt", folder);
    EXPECT_EQ(offlineReport(), fmt::format("Processing file AIG-regcodes.xml\n"
                                           "1 new regcode added, 1 regcode defined as special\n"
                                           "Processing files in {}\n"
                                           "{}\n"
                                           "0 new regcodes added\n",
                                           folder, fault));
    EXPECT_EQ(shownMessage(), fault);
    EXPECT_THAT(log.lines(), Contains(testing::StartsWith("Error reading regcode files in " + folder + ", what: ")));
    EXPECT_TRUE(log.contains("1 special liveries"));
    EXPECT_TRUE(log.contains("1 unique liveries"));
}

TEST_F(RegistrationCodes, aFolderThatCannotBeReadBarsNothingAndIsReported) {
    fs::remove_all("input");
    writeFile("input/my_regcodes", "not a folder");
    giveAig(R"(<livery title="Bad"/>)");
    gf_loadDontUseTitles();
    const std::string folder = pathText("input/my_regcodes");
    EXPECT_THAT(DontUseTitles, ElementsAre("Bad"));
    EXPECT_THAT(OfflineReport,
                ElementsAre(fmt::format("There were errors in processing the regcode files in folder '{}', see the "
                                        "Log.txt",
                                        folder)));
    EXPECT_TRUE(log.contains(fmt::format("0 don't use titles read from files in {}", folder)));
}

TEST_F(RegistrationCodes, anAigFileThatOpensButDoesNotLoadIsReported) {
    writeSealed("input/AIG-regcodes.enc", "<root>");
    gf_loadDontUseTitles();
    EXPECT_THAT(OfflineReport,
                ElementsAre("There were errors in processing the file 'AIG-regcodes.xml', see the Log.txt"));
    EXPECT_TRUE(log.contains("0 don't use titles read"));
    OfflineReport.clear();
    gf_processOfflineRegcodes();
    EXPECT_EQ(offlineReport(), "Processing file AIG-regcodes.xml\n"
                               "There were errors processing the AIG-regcode file 'AIG-regcodes.xml', see Log.txt\n"
                               "0 new regcodes added\n");
    EXPECT_EQ(shownMessage(), "") << "it is not the user's file";
}

TEST_F(RegistrationCodes, specialAndUniqueOnesAreCountedApart) {
    giveOwn("One;PH-ABC,PH-DEF;#\n");
    gf_processOfflineRegcodes();
    EXPECT_TRUE(log.contains("2 special liveries"));
    EXPECT_THAT(log.lines(), Not(Contains(testing::EndsWith("unique liveries"))));
    giveOwn("One;PH-ABC,PH-DEF;#\nTwo;PH-GHI\n");
    gf_processOfflineRegcodes();
    EXPECT_TRUE(log.contains("3 special liveries"));
    EXPECT_TRUE(log.contains("1 unique liveries"));
}

TEST_F(RegistrationCodes, anEmptyFolderOrNoneIsSkippedAndTheOldReportGoes) {
    writeFile("output/info/OfflineRegcodes.txt", "of former times\n");
    gf_processOfflineRegcodes();
    EXPECT_FALSE(fs::exists("output/info/OfflineRegcodes.txt"));
    fs::remove_all("input");
    gf_processOfflineRegcodes();
    EXPECT_FALSE(fs::exists("output/info/OfflineRegcodes.txt"));
    EXPECT_THAT(log.lines(), Not(Contains(testing::HasSubstr("Offline regcode files processed"))));
}

TEST_F(RegistrationCodes, anAigFileThatDoesNotOpenIsLeftOut) {
    writeFile("input/AIG-regcodes.enc", "no container");
    giveOwn("One;PH-ABC\n");
    gf_processOfflineRegcodes();
    EXPECT_THAT(offlineReport(), testing::StartsWith("Processing files in"));
    EXPECT_THAT(RegcodeTable, UnorderedElementsAre(Pair("PH-ABC", "One")));
    EXPECT_FALSE(fs::exists("input/AIG-regcodes.xml"));
}

TEST_F(RegistrationCodes, aDamagedAigFileIsLeftOutAndStaysAsItIs) {
    std::vector<testing::Matcher<std::string>> complaints;
    for (const DamagedContainer& damaged :
         damagedContainers(R"(<root><meta/><AIG-regcodes><livery title="One" reg="PH-AIG"/></AIG-regcodes></root>)")) {
        SCOPED_TRACE(damaged.name);
        install(damaged, "input/AIG-regcodes.enc");
        gf_processOfflineRegcodes();
        EXPECT_THAT(RegcodeTable, IsEmpty());
        EXPECT_FALSE(fs::exists("input/AIG-regcodes.xml"));
        EXPECT_TRUE(isInstalled(damaged, "input/AIG-regcodes.enc"));
        complaints.push_back(testing::StartsWith(damaged.failure.empty()
                                                     ? "==> Failed to load AIG-regcodes.xml"
                                                     : "==> gf_streamDecrypt exception: " + damaged.failure));
    }
    EXPECT_THAT(log.errors(), testing::ElementsAreArray(complaints));
}

TEST_F(RegistrationCodes, whatCannotBeDoneIsTold) {
    fs::remove_all("output");
    writeFile("output", "not a folder");
    giveOwn("One;PH-ABC\n");
    gf_processOfflineRegcodes();
    EXPECT_THAT(log.errors(), Contains(testing::StartsWith("==> exception: ")));
    EXPECT_THAT(RegcodeTable, UnorderedElementsAre(Pair("PH-ABC", "One"))) << "the result so far stands";
}

TEST_F(RegistrationCodes, aStepThatFailsIsToldAndTheNextOneGoesOn) {
    giveOwn("One;PH-ABC\n");
    const std::size_t longLine = 4000;
    writeFile("input/my_regcodes/long.txt", std::string(longLine, 'x') + "\n");
    {
        const FailingAllocation noMemoryForTheLine(longLine);
        gf_loadDontUseTitles();
    }
    {
        const FailingAllocation noMemoryForTheLine(longLine);
        gf_processOfflineRegcodes();
    }
    EXPECT_THAT(log.errors(), Contains(testing::StartsWith("==> exception: ")).Times(2)) << "once for each step";
    gf_processOfflineRegcodes();
    EXPECT_THAT(RegcodeTable, UnorderedElementsAre(Pair("PH-ABC", "One")));
}

TEST_F(RegistrationCodes, aReportThatCannotBeWrittenStandsInTheLogInstead) {
    fs::create_directories("output/info/OfflineRegcodes.txt/inside");
    giveOwn("One;PH-ABC\n");
    gf_processOfflineRegcodes();
    const std::string report = pathText("output/info/OfflineRegcodes.txt");
    EXPECT_THAT(log.errors(), Contains(testing::StartsWith("==> Error writing file " + report + ": ")));
    EXPECT_TRUE(log.contains("Processing files in " + pathText("input/my_regcodes")));
    EXPECT_TRUE(log.contains("1 new regcode added, 1 regcode defined as special"));
    EXPECT_THAT(log.lines(), Not(Contains(testing::HasSubstr("results can be found in"))));
    EXPECT_TRUE(log.contains("1 unique liveries")) << "the step goes on to its end";
    EXPECT_THAT(OfflineReport, IsEmpty());
}

TEST_F(RegistrationCodes, clashesWhoseFileCannotBeWrittenStandInTheLogInstead) {
    fs::create_directories("output/errors/InlineRegcodes.txt");
    takeSections({{.airl = "KLM", .type = "A320", .title = "One", .atcid = "PH-ABC"},
                  {.airl = "KLM", .type = "A320", .title = "Two", .atcid = "PH-ABC"}});
    EXPECT_THAT(log.lines(), ElementsAre(testing::StartsWith("==> Error writing file " +
                                                             pathText("output/errors/InlineRegcodes.txt") + ": "),
                                         "PH-ABC 'Two' => already in use by 'One'"));
}

TEST_F(RegistrationCodes, clashesThatCannotBeWrittenAreTold) {
    writeFile("output", "not a folder");
    takeSections({{.airl = "KLM", .type = "A320", .title = "One", .atcid = "PH-ABC"},
                  {.airl = "KLM", .type = "A320", .title = "Two", .atcid = "PH-ABC"}});
    EXPECT_THAT(log.lines(),
                ElementsAre(testing::StartsWith("==> exception: "), "PH-ABC 'Two' => already in use by 'One'"));
    EXPECT_THAT(RegcodeTable, UnorderedElementsAre(Pair("PH-ABC", "One")));
}

} // namespace
