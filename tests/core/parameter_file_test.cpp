#include "core/parameter_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <random>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <fmt/format.h>
#include <pugixml.hpp>

#include "core/exit_reason.h"
#include "core/injection_radius.h"
#include "platform/clock.h"
#include "platform/files.h"
#include "tests/support/log_capture.h"
#include "tests/support/meeting.h"
#include "tests/support/temporary_folder.h"

namespace fs = std::filesystem;
using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

namespace {

using Entry = std::pair<std::string, std::string>;

std::string element(const std::string& key, const std::string& value) {
    return "<parameter name=\"" + key + "\" value=\"" + value + "\"/>";
}

class ParameterFileTest : public testing::Test {
protected:
    ParameterFileTest() {
        fs::create_directories(gf_parameterFolder());
        toDefaults();
    }
    ~ParameterFileTest() override { toDefaults(); }

    static void toDefaults() {
        PROGRAM_VERSION.setDefault("");
        resetParameters();
    }

    /// A file of this version with these elements.
    static void writeParameters(const std::string& elements) {
        writeFile(gf_parameterFile(), "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<root>\n  <parameters>\n" +
                                          element("PROGRAM_VERSION", "11.10.8") + elements +
                                          "\n  </parameters>\n</root>\n");
    }

    static std::vector<Entry> stored() {
        pugi::xml_document document;
        EXPECT_TRUE(document.load_file(gf_parameterFile().c_str()));
        std::vector<Entry> entries;
        for (const pugi::xml_node node : document.child("root").child("parameters").children("parameter")) {
            entries.emplace_back(node.attribute("name").as_string(), node.attribute("value").as_string());
        }
        return entries;
    }

    static std::string storedValue(const std::string& key) {
        for (const Entry& entry : stored()) {
            if (entry.first == key) {
                return entry.second;
            }
        }
        return "(missing)";
    }

    static std::string fileName() { return platform::utf8FromPath(gf_parameterFile()); }

    /// Makes every save fail: the file beside cannot be written.
    static void blockSaving() {
        fs::path beside = gf_parameterFile();
        beside += ".new";
        writeFile(beside / "inside", "x");
    }

    /// Makes the only copy of a file that is to be replaced fail.
    static void blockGeneration0() { writeFile(gf_parameterFolder() / "parameters0.xml" / "inside", "x"); }

    /// Something that is there and cannot be read, as a file that another program holds: a folder of that name.
    static void putFileOutOfReach() { writeFile(gf_parameterFile() / "inside", "x"); }

    static std::ptrdiff_t entriesInFolder() {
        return std::distance(fs::directory_iterator(gf_parameterFolder()), fs::directory_iterator());
    }

    const LogCapture log_;
};

using ParameterFileThreads = ParameterFileTest;

std::vector<Entry> defaultEntries() {
    std::vector<Entry> entries{
        {"RANDOM", "true"},
        {"AEROWINX", "false"},
        {"COLLISION_USER_AIR", "true"},
        {"COLLISION_USER_GND", "true"},
        {"COLLISION_LIVE_PARKED_GND", "false"},
        {"ALWAYS_ON_TOP", "false"},
        {"SCAN_LIVERIES", "true"},
        {"LIG_PRIORITIZE", "true"},
        {"AIRBORNE_ONLY", "false"},
        {"SCAN_AIRPORTS", "true"},
        {"LIGHT_AIRCRAFT", "true"},
        {"HELICOPTERS", "true"},
        {"HIGH_PERF_AIRCRAFT", "true"},
        {"NAV_LIGHTS_WHILE_PARKED", "true"},
        {"AUTO_RANGE", "true"},
        {"STRAIGHT_PBS_ONLY", "false"},
        {"PARK_SOFT", "false"},
        {"WEEK", "false"},
        {"INITIAL_LOAD_ONLY", "false"},
        {"GUID_CHANGES", "true"},
        {"CUSTOM_PARKING_PERCENTAGE", "-1"},
        {"MAIN_WINDOW_X", "400"},
        {"MAIN_WINDOW_Y", "20"},
        {"AIRP_HEIGHT", "18000"},
        {"LAST_EPOCH_TIME:", "0"},
        {"HOLDING_THRESHOLD_METERS", "250"},
        {"MAX_HOLDING_MINUTES", "20"},
        {"MAX_FIT", "47"},
        {"P3D_VERSION", "5"},
        {"MATCHING_DEPTH", "4"},
        {"RANGE", "40"},
        {"AR_ABOVE_HEIGHT", "48000"},
        {"MAX_PARK_SEL", "500"},
        {"MAX_LIVE_SEL", "500"},
        {"AIRP_RANGE", "20"},
        {"PROGRAM_VERSION", "11.10.8"},
        {"SIM_INSTALL_PATH", ""},
        {"PORT_NUMBER", "10747"},
    };
    for (const char* folder : {"lfolder", "afolder"}) {
        for (int i = 0; i < 10; ++i) {
            entries.emplace_back(folder + std::to_string(i), "");
        }
    }
    for (const char* key : {"AIG_VERSION", "DBASE_VERSION", "AIRPORTS_VERSION", "LIV_SCAN_VERSION",
                            "ADDONS_SCAN_VERSION", "DESTINATION", "BLOCK_CALLSIGN"}) {
        entries.emplace_back(key, "");
    }
    return entries;
}

// --- A fresh file ---

TEST_F(ParameterFileTest, theFileLiesInTheProgramsFolderUnderRoamingApplicationData) {
    EXPECT_EQ(gf_parameterFile(), platform::roamingAppDataFolder() / "Tarnwing_P3D" / "parameters.xml");
}

TEST_F(ParameterFileTest, aFreshFileHoldsEveryKeyOnceWithItsDefault) {
    EXPECT_TRUE(gf_readParameters());
    EXPECT_THAT(stored(), ElementsAreArray(defaultEntries()));
    EXPECT_EQ(PROGRAM_VERSION.value(), "11.10.8");
}

TEST_F(ParameterFileTest, aFreshFileIsIndentedXmlWithADeclaration) {
    gf_readParameters();
    EXPECT_THAT(readFile(gf_parameterFile()), StartsWith("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                                                         "<root>\n"
                                                         "  <parameters>\n"
                                                         "    <parameter name=\"RANDOM\" value=\"true\" />\n"
                                                         "    <parameter name=\"AEROWINX\" value=\"false\" />\n"));
}

TEST_F(ParameterFileTest, aFreshFileIsAnnouncedInTheLog) {
    gf_readParameters();
    EXPECT_THAT(log_.lines(), ElementsAre("---------- parameters " + std::string(58, '-'),
                                          fileName() + " not found, creating new with default values:",
                                          "SCAN_LIVERIES=true", "SCAN_AIRPORTS=true"));
}

TEST_F(ParameterFileTest, aFreshFileAsksForBothScansThoughTheyWereOff) {
    const std::string bothOff = element("SCAN_LIVERIES", "false") + element("SCAN_AIRPORTS", "false");
    for (const std::string& former : {"<root><parameters>" + bothOff, "<root><other>" + bothOff + "</other></root>"}) {
        writeFile(gf_parameterFile(), former);
        SCAN_LIVERIES.value = false;
        SCAN_AIRPORTS.value = false;
        EXPECT_TRUE(gf_readParameters());
        EXPECT_TRUE(SCAN_LIVERIES.value);
        EXPECT_TRUE(SCAN_AIRPORTS.value);
        EXPECT_EQ(storedValue("SCAN_LIVERIES"), "true");
        EXPECT_EQ(storedValue("SCAN_AIRPORTS"), "true");
        const std::vector<std::string> lines = log_.lines();
        EXPECT_THAT(std::vector<std::string>(lines.end() - 2, lines.end()),
                    ElementsAre("SCAN_LIVERIES=true", "SCAN_AIRPORTS=true"));
    }
}

TEST_F(ParameterFileTest, bothScansAreStoredEvenWhereTheFreshFileCouldNotBeWritten) {
    writeFile(gf_parameterFile(), "<root><other/></root>");
    blockGeneration0();
    EXPECT_TRUE(gf_readParameters());
    EXPECT_THAT(stored(), ElementsAre(Entry{"SCAN_LIVERIES", "true"}, Entry{"SCAN_AIRPORTS", "true"}));
    EXPECT_THAT(readFile(gf_parameterFile()), HasSubstr("<other />"));
}

TEST_F(ParameterFileTest, aFreshFileBringsTheSettingsInMemoryBackToTheirDefaults) {
    MAX_HOLDING_MINUTES.value = 3;
    DESTINATION.setValue("EHAM");
    gf_readParameters();
    EXPECT_EQ(MAX_HOLDING_MINUTES.value, 20);
    EXPECT_EQ(DESTINATION.value(), "");
}

TEST_F(ParameterFileTest, theSecondReadFindsTheFreshFileComplete) {
    gf_readParameters();
    EXPECT_FALSE(gf_readParameters());
    EXPECT_THAT(stored(), ElementsAreArray(defaultEntries()));
}

TEST_F(ParameterFileTest, aFileWithoutParametersIsReplacedAndKeptAsGeneration0) {
    const std::string text = "<?xml version=\"1.0\"?><root><other/></root>";
    writeFile(gf_parameterFile(), text);
    EXPECT_TRUE(gf_readParameters());
    EXPECT_THAT(stored(), ElementsAreArray(defaultEntries()));
    EXPECT_EQ(readFile(gf_parameterFolder() / "parameters0.xml"), text);
}

// Runs out of memory inside the XML library, the one way in which adding an element fails.
TEST_F(ParameterFileTest, anElementThatCannotBeAddedIsLoggedAndTheOthersAreTried) {
    const auto allocate = pugi::get_memory_allocation_function();
    const auto deallocate = pugi::get_memory_deallocation_function();
    pugi::set_memory_management_functions([](std::size_t) -> void* { return nullptr; }, deallocate);
    gf_writeDefaultParameters();
    pugi::set_memory_management_functions(allocate, deallocate);
    EXPECT_THAT(log_.lines(), AllOf(Contains("===> adding xml parameter RANDOM with true failed!"),
                                    Contains("===> adding xml parameter BLOCK_CALLSIGN with  failed!")));
}

// --- Reading ---

TEST_F(ParameterFileTest, theValuesOfTheFileAreTaken) {
    writeParameters(element("RANDOM", "false") + element("AEROWINX", "true") + element("MAIN_WINDOW_X", "-17") +
                    element("MATCHING_DEPTH", "2") + element("AIRP_HEIGHT", "36000") +
                    element("afolder3", "D:\\Add on") + element("DESTINATION", "EHAM") +
                    element("BLOCK_CALLSIGN", "KLM123") + element("LAST_EPOCH_TIME:", "1700000000"));
    EXPECT_FALSE(gf_readParameters());
    EXPECT_FALSE(RANDOM.value);
    EXPECT_TRUE(AEROWINX.value);
    EXPECT_EQ(MAIN_WINDOW_X.value, -17);
    EXPECT_EQ(MATCHING_DEPTH.value, 2);
    EXPECT_EQ(AIRP_HEIGHT.value, 36000);
    EXPECT_EQ(afolder[3].value(), "D:\\Add on");
    EXPECT_EQ(DESTINATION.value(), "EHAM");
    EXPECT_EQ(BLOCK_CALLSIGN.value(), "KLM123");
    EXPECT_EQ(LAST_EPOCH_TIME.value, 1700000000);
}

TEST_F(ParameterFileTest, everyFormOfASwitchIsRead) {
    const std::map<std::string, bool> forms{{"true", true}, {"1", true},      {"True", true}, {"yes", true},
                                            {"Y", true},    {"false", false}, {"0", false},   {"no", false},
                                            {"", false},    {"2", false},     {"x", false},   {" 1", false}};
    for (const auto& [text, value] : forms) {
        writeParameters(element("RANDOM", text));
        gf_readParameters();
        EXPECT_EQ(RANDOM.value, value) << text;
    }
}

TEST_F(ParameterFileTest, everyTextOfANumberEndsWithinItsLimits) {
    const std::map<std::string, int> texts{{"30", 30},
                                           {" 7", 7},
                                           {"+8", 8},
                                           {"abc", 1},
                                           {"", 1},
                                           {"-5", 1},
                                           {"12.9", 12},
                                           {"99999999999999999999", 60},
                                           {"1e999", 1},
                                           {"nan", 1},
                                           {"inf", 1},
                                           {"0x10", 16},
                                           {"0x7FFFFFFFFF", 60},
                                           {"-0x10", 1},
                                           {"-99999999999999999999", 1}};
    for (const auto& [text, value] : texts) {
        writeParameters(element("MAX_HOLDING_MINUTES", text));
        gf_readParameters();
        EXPECT_EQ(MAX_HOLDING_MINUTES.value, value) << text;
    }
}

TEST_F(ParameterFileTest, aRangeOf999ComesUpAs100AndTheFileKeepsItsText) {
    writeParameters(element("RANGE", "999"));
    gf_readParameters();
    EXPECT_EQ(RANGE.value, 100);
    EXPECT_EQ(storedValue("RANGE"), "999");
    EXPECT_TRUE(log_.contains("RANGE=100"));
}

TEST_F(ParameterFileTest, aMissingValueCountsAsFalseOrZero) {
    writeParameters("<parameter name=\"RANDOM\"/><parameter name=\"CUSTOM_PARKING_PERCENTAGE\"/>"
                    "<parameter name=\"PORT_NUMBER\"/>");
    gf_readParameters();
    EXPECT_FALSE(RANDOM.value);
    EXPECT_EQ(CUSTOM_PARKING_PERCENTAGE.value, 0);
    EXPECT_EQ(PORT_NUMBER.value(), "");
}

TEST_F(ParameterFileTest, aMissingKeyComesUpAsItsDefaultAndIsAdded) {
    MAX_HOLDING_MINUTES.value = 3;
    PORT_NUMBER.setValue("1");
    writeParameters(element("RANGE", "20"));
    EXPECT_FALSE(gf_readParameters());
    EXPECT_EQ(MAX_HOLDING_MINUTES.value, 20);
    EXPECT_EQ(PORT_NUMBER.value(), "10747");
    EXPECT_EQ(storedValue("MAX_HOLDING_MINUTES"), "20");
    EXPECT_EQ(storedValue("PORT_NUMBER"), "10747");
    EXPECT_EQ(stored().size(), defaultEntries().size());
}

TEST_F(ParameterFileTest, theLogListsTheValuesBetweenTwoRules) {
    gf_writeDefaultParameters();
    gf_readParameters();
    std::vector<std::string> expected{"---------- parameters " + std::string(58, '-'), "from '" + fileName() + "'"};
    for (const auto& [key, value] : defaultEntries()) {
        expected.push_back(fmt::format("{}={}", key, value));
        if (key == "AIRP_RANGE") {
            expected.emplace_back("AIRP_HEIGHT=18000"); // for the second time: it is in both lists of numbers
        }
    }
    expected.emplace_back(80, '-');
    EXPECT_THAT(log_.lines(), ElementsAreArray(expected));
}

TEST_F(ParameterFileTest, theLongestFitAndTheRadiusAreDerived) {
    writeParameters(element("MAX_FIT", "9") + element("RANGE", "25"));
    gf_readParameters();
    EXPECT_EQ(MAX_FIT_FL.value, 5.0F);
    EXPECT_EQ(gRadiusNm, 25.0);
    EXPECT_EQ(gRadiusMeters, 46300.0);
}

TEST_F(ParameterFileTest, theParkingShareLastsForOneRun) {
    writeParameters("");
    parking_percentage.value = 80;
    saveParameter(parking_percentage);
    EXPECT_EQ(storedValue("parking_percentage"), "80");
    resetParameters();
    gf_readParameters();
    EXPECT_EQ(parking_percentage.value, 30);
    EXPECT_EQ(storedValue("parking_percentage"), "80");
}

TEST_F(ParameterFileTest, whatTheUserWroteBesideTheParametersStays) {
    writeParameters("<!-- mine --><parameter name=\"UNKNOWN\" value=\"u\"/>");
    gf_readParameters();
    saveParameter(RANDOM);
    EXPECT_THAT(readFile(gf_parameterFile()), HasSubstr("<!-- mine -->"));
    EXPECT_EQ(storedValue("UNKNOWN"), "u");
}

// --- Files of old versions, without a root ---

TEST_F(ParameterFileTest, aFileWithoutARootIsReadAndTheFirstSaveAddsIt) {
    writeFile(gf_parameterFile(), "<?xml version=\"1.0\"?><parameters>" + element("PROGRAM_VERSION", "11.10.8") +
                                      element("RANGE", "65") + element("parking_percentage", "45") + "</parameters>");
    EXPECT_FALSE(gf_readParameters());
    EXPECT_EQ(RANGE.value, 65);

    P3D_VERSION.value = 6;
    saveParameter(P3D_VERSION);
    EXPECT_EQ(storedValue("RANGE"), "65");
    EXPECT_EQ(storedValue("P3D_VERSION"), "6");
    EXPECT_EQ(storedValue("parking_percentage"), "45");
    const std::vector<std::string> lines = log_.lines();
    EXPECT_THAT(std::vector<std::string>(lines.end() - 4, lines.end()),
                ElementsAre("P3D_VERSION=6", "",
                            "Placing a root level around a new parameters.xml to make it 100% xml compliance", ""));
    EXPECT_THAT(readFile(gf_parameterFile()), StartsWith("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<root>\n"));
}

// The window's place may be saved before the parameters are read.
TEST_F(ParameterFileTest, aFileWithoutARootThatWasNotReadYetKeepsItsValues) {
    writeFile(gf_parameterFile(), "<parameters>" + element("RANGE", "65") + "</parameters>");
    gf_readWindowPosition();
    saveParameter(MAIN_WINDOW_X);
    EXPECT_EQ(storedValue("RANGE"), "65");
    EXPECT_EQ(storedValue("MAIN_WINDOW_X"), "400");
    EXPECT_EQ(stored().size(), defaultEntries().size());
}

TEST_F(ParameterFileTest, theWindowsPositionIsReadFromAFileWithoutARoot) {
    writeFile(gf_parameterFile(),
              "<parameters>" + element("MAIN_WINDOW_X", "111") + element("MAIN_WINDOW_Y", "222") + "</parameters>");
    gf_readWindowPosition();
    EXPECT_EQ(MAIN_WINDOW_X.value, 111);
    EXPECT_EQ(MAIN_WINDOW_Y.value, 222);
}

// --- The window's position ---

TEST_F(ParameterFileTest, theWindowsPositionIsReadAlone) {
    writeParameters(element("MAIN_WINDOW_X", "111") + element("MAIN_WINDOW_Y", "222") + element("RANGE", "5"));
    gf_readWindowPosition();
    EXPECT_EQ(MAIN_WINDOW_X.value, 111);
    EXPECT_EQ(MAIN_WINDOW_Y.value, 222);
    EXPECT_EQ(RANGE.value, 40);
    EXPECT_THAT(log_.lines(), IsEmpty());
}

TEST_F(ParameterFileTest, aWindowPositionOutOfRangeComesUpAtTheLimit) {
    writeParameters(element("MAIN_WINDOW_X", "-30001") + element("MAIN_WINDOW_Y", "99999"));
    gf_readWindowPosition();
    EXPECT_EQ(MAIN_WINDOW_X.value, -30000);
    EXPECT_EQ(MAIN_WINDOW_Y.value, 30000);
    MAIN_WINDOW_X.value = 0;
    gf_readParameters();
    EXPECT_EQ(MAIN_WINDOW_X.value, -30000);
}

TEST_F(ParameterFileTest, aMissingWindowPositionComesUpAsTheDefault) {
    MAIN_WINDOW_X.value = 1;
    MAIN_WINDOW_Y.value = 2;
    writeParameters("");
    gf_readWindowPosition();
    EXPECT_EQ(MAIN_WINDOW_X.value, 400);
    EXPECT_EQ(MAIN_WINDOW_Y.value, 20);
}

TEST_F(ParameterFileTest, theWindowsPositionNeedsNoFile) {
    gf_readWindowPosition();
    EXPECT_EQ(MAIN_WINDOW_X.value, 400);
    EXPECT_THAT(log_.lines(), IsEmpty());
    EXPECT_FALSE(fs::exists(gf_parameterFile()));
}

TEST_F(ParameterFileTest, aCorruptFileIsKeptAsGeneration0AndDefaultsTakeItsPlace) {
    const std::string text = "<root><parameters><parameter name=";
    writeFile(gf_parameterFile(), text);
    gf_readWindowPosition();
    EXPECT_THAT(log_.lines(), ElementsAre("==> parameters.xml failed to load (Error parsing element attribute). "
                                          "Saved as 0.xml and removed."));
    EXPECT_FALSE(fs::exists(gf_parameterFile()));
    EXPECT_EQ(readFile(gf_parameterFolder() / "parameters0.xml"), text);

    EXPECT_TRUE(gf_readParameters());
    EXPECT_THAT(stored(), ElementsAreArray(defaultEntries()));
    EXPECT_EQ(readFile(gf_parameterFolder() / "parameters0.xml"), text);
}

TEST_F(ParameterFileTest, aCorruptFileThatCannotBeKeptIsNotRemoved) {
    writeFile(gf_parameterFile(), "corrupt");
    blockGeneration0();
    gf_readWindowPosition();
    EXPECT_EQ(readFile(gf_parameterFile()), "corrupt");
    EXPECT_THAT(log_.errors(), ElementsAre(HasSubstr("failed to load"), HasSubstr("parameters0.xml failed: ")));
}

TEST_F(ParameterFileTest, aCorruptFileThatCannotBeKeptIsNeverReplaced) {
    writeFile(gf_parameterFile(), "corrupt");
    blockGeneration0();
    EXPECT_TRUE(gf_readParameters());
    EXPECT_EQ(readFile(gf_parameterFile()), "corrupt");
    const std::size_t errorsOfTheReading = log_.errors().size();
    saveParameter(RANGE);
    EXPECT_EQ(readFile(gf_parameterFile()), "corrupt");
    const std::vector<std::string> errors = log_.errors();
    EXPECT_THAT(
        std::vector<std::string>(errors.begin() + static_cast<std::ptrdiff_t>(errorsOfTheReading), errors.end()),
        ElementsAre(HasSubstr("parameters0.xml failed: "), "==> saving: " + fileName() + " failed"));
}

// --- A file that is there and cannot be read ---

TEST_F(ParameterFileTest, aFileOutOfReachCostsTheWindowsPositionOneErrorLineAndStays) {
    putFileOutOfReach();
    const platform::ManualClock clock(platform::wallNow());
    gf_readWindowPosition();
    EXPECT_EQ(MAIN_WINDOW_X.value, 400);
    EXPECT_THAT(log_.lines(), ElementsAre("==> parameters.xml: File was not found"));
    EXPECT_TRUE(fs::exists(gf_parameterFile() / "inside"));
    EXPECT_EQ(entriesInFolder(), 1);
}

TEST_F(ParameterFileTest, aFileOutOfReachStopsTheReadingAndNothingIsWritten) {
    putFileOutOfReach();
    RANGE.value = 12;
    const platform::ManualClock clock(platform::wallNow());
    try {
        gf_readParameters();
        FAIL() << "no exception";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "parameters.xml: File was not found");
    }
    EXPECT_EQ(RANGE.value, 12);
    EXPECT_TRUE(fs::exists(gf_parameterFile() / "inside"));
    EXPECT_EQ(entriesInFolder(), 1);
}

TEST_F(ParameterFileTest, aFileOutOfReachIsTriedForAWhileButAMissingOneIsNot) {
    const platform::ManualClock clock(platform::wallNow());
    const platform::SteadyTime begin = platform::steadyNow();
    EXPECT_FALSE(removeParameter("RANGE"));
    EXPECT_EQ(platform::steadyNow(), begin);
    putFileOutOfReach();
    EXPECT_FALSE(removeParameter("RANGE"));
    EXPECT_GT(platform::steadyNow(), begin);
    EXPECT_LE(platform::steadyNow(), begin + std::chrono::seconds(1));
}

// --- Saving ---

TEST_F(ParameterFileTest, savingWithoutAFileMakesOneWithThisParameter) {
    RANGE.value = 12;
    saveParameter(RANGE);
    EXPECT_THAT(stored(), ElementsAre(Entry{"RANGE", "12"}));
    EXPECT_THAT(log_.lines(), ElementsAre("RANGE=12"));
}

TEST_F(ParameterFileTest, savingChangesOneValueAndLeavesTheOthers) {
    gf_readParameters();
    std::vector<Entry> expected = defaultEntries();
    WEEK.value = true;
    saveParameter(WEEK);
    EXPECT_THAT(expected.at(17), testing::Pair("WEEK", "false"));
    expected.at(17).second = "true";
    EXPECT_THAT(stored(), ElementsAreArray(expected));
    EXPECT_EQ(log_.lines().back(), "WEEK=true");
}

TEST_F(ParameterFileTest, eachKindIsSavedInItsForm) {
    RANDOM.value = false;
    MAIN_WINDOW_Y.value = -5;
    SIM_INSTALL_PATH.setValue("C:\\P3D \"v5\" <&>'");
    saveParameter(RANDOM);
    saveParameter(MAIN_WINDOW_Y);
    saveParameter(SIM_INSTALL_PATH);
    EXPECT_THAT(stored(), ElementsAre(Entry{"RANDOM", "false"}, Entry{"MAIN_WINDOW_Y", "-5"},
                                      Entry{"SIM_INSTALL_PATH", "C:\\P3D \"v5\" <&>'"}));
    EXPECT_THAT(log_.lines(), ElementsAre("RANDOM=false", "MAIN_WINDOW_Y=-5", "SIM_INSTALL_PATH=C:\\P3D \"v5\" <&>'"));
}

TEST_F(ParameterFileTest, twoFastSavesInARowKeepBothValues) {
    gf_readParameters();
    MAX_PARK_SEL.value = 10;
    MAX_LIVE_SEL.value = 25;
    saveParameter(MAX_PARK_SEL);
    saveParameter(MAX_LIVE_SEL);
    EXPECT_EQ(storedValue("MAX_PARK_SEL"), "10");
    EXPECT_EQ(storedValue("MAX_LIVE_SEL"), "25");
}

TEST_F(ParameterFileTest, aStoppingRunSavesButDoesNotLogIt) {
    gf_stopRun(ExitReason::newSettings, 3);
    RANGE.value = 12;
    saveParameter(RANGE);
    gf_resetExitReason();
    EXPECT_EQ(storedValue("RANGE"), "12");
    EXPECT_THAT(log_.lines(), IsEmpty());
}

TEST_F(ParameterFileTest, aParameterThatStandsTwiceIsSetInBothPlaces) {
    writeParameters(element("RANGE", "2") + "<parameter name=\"RANGE\"/>");
    RANGE.value = 12;
    saveParameter(RANGE);
    EXPECT_THAT(stored(), ElementsAre(Entry{"PROGRAM_VERSION", "11.10.8"}, Entry{"RANGE", "12"}, Entry{"RANGE", "12"}));
}

TEST_F(ParameterFileTest, savingMakesAMissingParametersElement) {
    writeFile(gf_parameterFile(), "<root><other/></root>");
    saveParameter(RANGE);
    EXPECT_THAT(stored(), ElementsAre(Entry{"RANGE", "40"}));
    EXPECT_THAT(readFile(gf_parameterFile()), HasSubstr("<other />"));
}

TEST_F(ParameterFileTest, savingOverACorruptFileKeepsItAsGeneration0) {
    writeFile(gf_parameterFile(), "<root><parameters>");
    saveParameter(RANGE);
    EXPECT_THAT(stored(), ElementsAre(Entry{"RANGE", "40"}));
    EXPECT_EQ(readFile(gf_parameterFolder() / "parameters0.xml"), "<root><parameters>");
}

TEST_F(ParameterFileTest, aFailedSaveIsAnErrorAndLeavesTheFile) {
    gf_readParameters();
    blockSaving();
    const std::string before = readFile(gf_parameterFile());
    RANGE.value = 12;
    saveParameter(RANGE);
    EXPECT_EQ(readFile(gf_parameterFile()), before);
    EXPECT_THAT(log_.errors(), ElementsAre("==> saving: " + fileName() + " failed"));
}

TEST_F(ParameterFileTest, aFreshFileThatCannotBeSavedIsAnError) {
    blockSaving();
    EXPECT_TRUE(gf_readParameters());
    EXPECT_FALSE(fs::exists(gf_parameterFile()));
    EXPECT_THAT(log_.errors(), Contains("==> saving: " + fileName() + " failed"));
}

TEST_F(ParameterFileTest, aSaveWithoutTheFolderIsAnError) {
    fs::remove_all(gf_parameterFolder());
    saveParameter(RANGE);
    EXPECT_THAT(log_.errors(), ElementsAre("==> saving: " + fileName() + " failed"));
}

TEST_F(ParameterFileTest, aFileThatIsOutOfReachIsNotReplacedByOneValue) {
    putFileOutOfReach();
    const platform::ManualClock clock(platform::wallNow());
    saveParameter(RANGE);
    EXPECT_TRUE(fs::is_directory(gf_parameterFile()));
    EXPECT_THAT(log_.errors(), ElementsAre("==> saving: " + fileName() + " failed"));
}

TEST_F(ParameterFileTest, noHalfWrittenFileStaysBehind) {
    gf_readParameters();
    saveParameter(RANGE);
    EXPECT_EQ(entriesInFolder(), 1);
}

TEST_F(ParameterFileTest, aLeftOverOfABrokenSaveDoesNoHarm) {
    gf_readParameters();
    fs::path beside = gf_parameterFile();
    beside += ".new";
    writeFile(beside, std::string(100'000, '<'));
    RANGE.value = 12;
    saveParameter(RANGE);
    EXPECT_EQ(storedValue("RANGE"), "12");
    EXPECT_FALSE(fs::exists(beside));
}

TEST_F(ParameterFileTest, anyTextSurvivesTheFile) {
    std::mt19937 random(7);
    std::uniform_int_distribution<int> byte(0, 255);
    std::uniform_int_distribution<int> ascii(0, 127);
    std::uniform_int_distribution<std::size_t> length(0, 30);
    for (int i = 0; i < 40; ++i) {
        std::string text(length(random), ' ');
        for (char& c : text) {
            c = static_cast<char>(i % 2 == 0 ? byte(random) : ascii(random));
        }
        lfolder[0].setValue(text);
        const std::string kept = lfolder[0].value();
        saveParameter(lfolder[0]);
        lfolder[0].setValue("");
        EXPECT_FALSE(gf_readParameters());
        EXPECT_EQ(lfolder[0].value(), kept);
    }
}

TEST_F(ParameterFileTest, textBeyondAsciiIsStoredAsUtf8) {
    SIM_INSTALL_PATH.setValue("C:\\Z\xC3\xBCrich\\\xE6\x9D\xB1\xE4\xBA\xAC");
    saveParameter(SIM_INSTALL_PATH);
    EXPECT_THAT(readFile(gf_parameterFile()), HasSubstr("\"C:\\Z\xC3\xBCrich\\\xE6\x9D\xB1\xE4\xBA\xAC\""));
}

// --- Removing ---

TEST_F(ParameterFileTest, oneParameterIsRemoved) {
    writeParameters(element("LOG", "1") + element("RANGE", "12"));
    EXPECT_TRUE(removeParameter("LOG"));
    EXPECT_THAT(stored(), ElementsAre(Entry{"PROGRAM_VERSION", "11.10.8"}, Entry{"RANGE", "12"}));
    EXPECT_FALSE(removeParameter("LOG"));
}

TEST_F(ParameterFileTest, aRemovalThatCannotBeSavedIsNone) {
    writeParameters(element("LOG", "1"));
    blockSaving();
    EXPECT_FALSE(removeParameter("LOG"));
    EXPECT_EQ(storedValue("LOG"), "1");
    EXPECT_THAT(log_.errors(), ElementsAre("==> saving: " + fileName() + " failed"));
}

TEST_F(ParameterFileTest, nothingIsRemovedWithoutAFile) {
    EXPECT_FALSE(removeParameter("LOG"));
    EXPECT_FALSE(fs::exists(gf_parameterFile()));
}

// --- Threads ---

TEST_F(ParameterFileThreads, savesFromTwoThreadsKeepBothValues) {
    gf_readParameters();
    constexpr int rounds = 30;
    Meeting together(2);
    std::thread window([&together] {
        for (int i = 1; i <= rounds; ++i) {
            together.arrive_and_wait();
            MAIN_WINDOW_X.value = i;
            saveParameter(MAIN_WINDOW_X);
            together.arrive_and_wait();
        }
    });
    for (int i = 1; i <= rounds; ++i) {
        DESTINATION.setValue(fmt::format("EH{}", i));
        together.arrive_and_wait();
        saveParameter(DESTINATION);
        together.arrive_and_wait();
        EXPECT_EQ(storedValue("MAIN_WINDOW_X"), std::to_string(i));
        EXPECT_EQ(storedValue("DESTINATION"), DESTINATION.value());
    }
    window.join();
    EXPECT_EQ(stored().size(), defaultEntries().size());
    EXPECT_THAT(log_.errors(), IsEmpty());
}

} // namespace
