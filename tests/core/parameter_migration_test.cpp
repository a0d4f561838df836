#include "core/parameter_migration.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "core/parameter_file.h"
#include "core/parameters.h"
#include "platform/files.h"
#include "tests/support/log_capture.h"
#include "tests/support/temporary_folder.h"

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

const char* const removedKeys[] = {
    "CALLSIGN_OBJECTIDS",
    "PARK_FAKE",
    "SUPPRESS_STUB",
    "LOG",
    "LEARN_SOFT",
    "PROGRAM_INSTALL_PATH",
    "LATERAL_RANGE",
    "CUSTOM_MAX_PARK",
    "MAX_LIVE",
    "AIRPORT_RANGE",
    "AUTO_RANGE_ABOVE_HEIGHT",
    "AIRPORT_HEIGHT",
    "MSFS_2020",
    "AI_PACKAGE_ORDER",
};

class ParameterMigrationTest : public testing::Test {
protected:
    ParameterMigrationTest() {
        fs::create_directories(gf_parameterFolder());
        toDefaults();
    }
    ~ParameterMigrationTest() override { toDefaults(); }

    static void toDefaults() {
        PROGRAM_VERSION.setDefault("");
        resetParameters();
    }

    /// The parameters of another version, with a setting of the user's and every key that is no longer used.
    static std::string parametersOf(const std::string& version) {
        std::string text = "<parameters><parameter name=\"PROGRAM_VERSION\" value=\"" + version +
                           "\"/><parameter name=\"RANGE\" value=\"65\"/>";
        for (const char* key : removedKeys) {
            text += std::string("<parameter name=\"") + key + "\" value=\"1\"/>";
        }
        return text + "</parameters>";
    }

    static void writeParametersOf(const std::string& version) {
        writeFile(gf_parameterFile(), "<root>" + parametersOf(version) + "</root>");
    }

    static void writeRootlessParametersOf(const std::string& version) {
        writeFile(gf_parameterFile(), parametersOf(version));
    }

    static bool fileHas(const std::string& key, const std::string& value) {
        return readFile(gf_parameterFile()).find("name=\"" + key + "\" value=\"" + value + "\"") != std::string::npos;
    }

    static bool fileNames(const std::string& key) {
        return readFile(gf_parameterFile()).find("name=\"" + key + "\"") != std::string::npos;
    }

    /// The lines behind the list of the parameters.
    std::vector<std::string> migrationLines() const {
        std::vector<std::string> lines = log_.lines();
        const auto rule = std::find(lines.begin(), lines.end(), std::string(80, '-'));
        return {rule == lines.end() ? rule : rule + 1, lines.end()};
    }

    const LogCapture log_;
};

TEST_F(ParameterMigrationTest, aFileOfThisVersionIsLeftAlone) {
    writeParametersOf("11.10.8");
    writeFile("EHAM.xml", "x");
    EXPECT_FALSE(gf_readParameters());
    EXPECT_THAT(migrationLines(), ElementsAre());
    EXPECT_TRUE(fileNames("LOG"));
    EXPECT_TRUE(fs::exists("EHAM.xml"));
}

TEST_F(ParameterMigrationTest, aFileWithoutAVersionGetsThisVersionAndNothingElse) {
    writeParametersOf("");
    writeFile("EHAM.xml", "x");
    EXPECT_FALSE(gf_readParameters());
    EXPECT_THAT(migrationLines(), ElementsAre("PROGRAM_VERSION=11.10.8"));
    EXPECT_TRUE(fileHas("PROGRAM_VERSION", "11.10.8"));
    EXPECT_TRUE(fileNames("LOG"));
    EXPECT_TRUE(fs::exists("EHAM.xml"));
}

TEST_F(ParameterMigrationTest, aVersionThatIsNoneIsOneErrorLineAndGivesWayToThisVersion) {
    const std::pair<const char*, const char*> faults[] = {
        {"newest", "invalid version format"},
        {"11.10", "invalid version format"},
        {"11.99999999999.1", "parse error in version string"},
    };
    for (const auto& [version, reason] : faults) {
        writeParametersOf(version);
        writeFile("EHAM.xml", "x");
        EXPECT_FALSE(gf_readParameters());
        EXPECT_TRUE(log_.contains(fmt::format("==> PROGRAM_VERSION '{}': {}", version, reason)));
        EXPECT_EQ(log_.lines().back(), "PROGRAM_VERSION=11.10.8");
        EXPECT_EQ(PROGRAM_VERSION.value(), "11.10.8");
        EXPECT_TRUE(fileHas("PROGRAM_VERSION", "11.10.8")) << version;
        EXPECT_EQ(RANGE.value, 65) << version;
        EXPECT_TRUE(fileHas("RANGE", "65")) << version;
        EXPECT_TRUE(fileNames("LOG")) << version;
        EXPECT_TRUE(fs::exists("EHAM.xml")) << version;
    }
    EXPECT_EQ(log_.errors().size(), std::size(faults));
}

TEST_F(ParameterMigrationTest, aFileOfANewerVersionOnlyGetsThisVersion) {
    for (const char* version : {"11.10.9", "11.11.0", "12.0.0"}) {
        writeParametersOf(version);
        EXPECT_FALSE(gf_readParameters());
        EXPECT_EQ(PROGRAM_VERSION.value(), "11.10.8");
        EXPECT_TRUE(fileHas("PROGRAM_VERSION", "11.10.8")) << version;
        EXPECT_TRUE(fileHas("RANGE", "65")) << version;
        EXPECT_TRUE(fileNames("LOG")) << version;
    }
    EXPECT_FALSE(log_.contains("This is a version update from 11.10.8 -> 12.0.0"));
}

TEST_F(ParameterMigrationTest, anUpgradeFrom11_0_1BringsAllSettingsBackToTheirDefaults) {
    writeParametersOf("11.0.1");
    const std::string before = readFile(gf_parameterFile());
    writeFile("EHAM.xml", "x");
    EXPECT_FALSE(gf_readParameters());
    EXPECT_EQ(RANGE.value, 40);
    EXPECT_EQ(PROGRAM_VERSION.value(), "11.10.8");
    EXPECT_TRUE(fileHas("RANGE", "40"));
    EXPECT_TRUE(fileHas("PROGRAM_VERSION", "11.10.8"));
    EXPECT_FALSE(fileNames("LOG"));
    EXPECT_TRUE(fs::exists("EHAM.xml"));
    EXPECT_THAT(
        migrationLines(),
        ElementsAre(
            "PROGRAM_VERSION=11.10.8", "This is a version update from 11.10.8 -> 11.0.1", "",
            "Your previous version was too old to convert the old text box parameters to the newdropbox values.",
            "Tarnwing_P3D re-starts with default parameter values ...", ""));
    EXPECT_THAT(readFile(gf_parameterFolder() / "parameters0.xml"), HasSubstr("name=\"RANGE\" value=\"65\""));
}

TEST_F(ParameterMigrationTest, anUpgradeFrom11_0_2KeepsTheSettingsAndDropsTheOldKeys) {
    writeParametersOf("11.0.2");
    EXPECT_FALSE(gf_readParameters());
    EXPECT_EQ(RANGE.value, 65);
    EXPECT_TRUE(fileHas("RANGE", "65"));
    EXPECT_TRUE(fileHas("PROGRAM_VERSION", "11.10.8"));
    std::vector<std::string> expected{"PROGRAM_VERSION=11.10.8", "This is a version update from 11.10.8 -> 11.0.2"};
    for (const char* key : removedKeys) {
        EXPECT_FALSE(fileNames(key)) << key;
        expected.push_back("Parameter '" + std::string(key) + "' removed");
    }
    expected.push_back(platform::utf8FromPath(fs::current_path()));
    EXPECT_THAT(migrationLines(), testing::ElementsAreArray(expected));
}

TEST_F(ParameterMigrationTest, anUpgradeOfAFileWithoutARootFrom11_0_1BringsTheDefaultsBack) {
    writeRootlessParametersOf("11.0.1");
    EXPECT_FALSE(gf_readParameters());
    EXPECT_EQ(RANGE.value, 40);
    EXPECT_TRUE(fileHas("RANGE", "40"));
    EXPECT_TRUE(fileHas("PROGRAM_VERSION", "11.10.8"));
    EXPECT_FALSE(fileNames("LOG"));
    EXPECT_THAT(readFile(gf_parameterFile()), HasSubstr("<root>"));
    EXPECT_THAT(readFile(gf_parameterFolder() / "parameters0.xml"), HasSubstr("name=\"RANGE\" value=\"65\""));
}

TEST_F(ParameterMigrationTest, anUpgradeOfAFileWithoutARootFrom11_0_2KeepsTheSettings) {
    writeRootlessParametersOf("11.0.2");
    EXPECT_FALSE(gf_readParameters());
    EXPECT_EQ(RANGE.value, 65);
    EXPECT_TRUE(fileHas("RANGE", "65"));
    EXPECT_TRUE(fileHas("PROGRAM_VERSION", "11.10.8"));
    for (const char* key : removedKeys) {
        EXPECT_FALSE(fileNames(key)) << key;
    }
    EXPECT_THAT(readFile(gf_parameterFile()), HasSubstr("<root>"));
    EXPECT_TRUE(log_.contains("Placing a root level around a new parameters.xml to make it 100% xml compliance"));
}

TEST_F(ParameterMigrationTest, anOldKeyThatIsNotThereIsNotMentioned) {
    writeFile(gf_parameterFile(), "<root><parameters><parameter name=\"PROGRAM_VERSION\" value=\"11.10.7\"/>"
                                  "</parameters></root>");
    gf_readParameters();
    EXPECT_THAT(migrationLines(),
                ElementsAre("PROGRAM_VERSION=11.10.8", "This is a version update from 11.10.8 -> 11.10.7",
                            platform::utf8FromPath(fs::current_path())));
}

TEST_F(ParameterMigrationTest, anUpgradeDeletesWhatEarlierVersionsLeft) {
    writeParametersOf("11.10.7");
    writeFile("TO_BE_LEARNED_OFFLINE/deep/file.xml", "x");
    writeFile("versions.json", "x");
    writeFile("EHAM.xml", "x");
    writeFile("KJFK.xml", "x");
    writeFile("input/airports_p3d.xml", "x");
    writeFile("new_version/setup.zip", "x");
    gf_readParameters();
    for (const char* gone :
         {"TO_BE_LEARNED_OFFLINE", "versions.json", "EHAM.xml", "KJFK.xml", "input/airports_p3d.xml", "new_version"}) {
        EXPECT_FALSE(fs::exists(gone)) << gone;
    }
}

TEST_F(ParameterMigrationTest, anUpgradeDeletesNothingElse) {
    writeParametersOf("11.10.7");
    const char* const kept[] = {
        "EHA.xml",           "EHAMX.xml",      "EHAM.txt",        "EHAM",           "EHAM.XML",
        "airports/EHAM.xml", "input/EHAM.xml", "input/other.xml", "fold.xml/inside"}; // a folder with such a name
    for (const char* path : kept) {
        writeFile(path, "x");
    }
    gf_readParameters();
    for (const char* path : kept) {
        EXPECT_TRUE(fs::exists(path)) << path;
    }
}

TEST_F(ParameterMigrationTest, aLeftOverThatCannotBeDeletedIsReportedWithTheSettingsAlreadyUpToDate) {
    writeParametersOf("11.10.7");
    writeFile("versions.json/inside", "x"); // a folder with content where the file is expected
    try {
        gf_readParameters();
        ADD_FAILURE() << "no failure";
    } catch (const fs::filesystem_error& error) {
        EXPECT_NE(std::string(error.what()).find("filesystem error: remove: "), std::string::npos) << error.what();
    }
    EXPECT_TRUE(fileHas("PROGRAM_VERSION", "11.10.8"));
    EXPECT_FALSE(fileNames("LOG"));
    EXPECT_FALSE(gf_readParameters());
}

} // namespace
