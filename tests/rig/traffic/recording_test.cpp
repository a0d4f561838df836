// tests/rig/traffic/recording_test.cpp
#include "rig/traffic/recording.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdexcept>

#include "rig/traffic/gzip_text.h"
#include "tests/support/temporary_folder.h"

namespace rig {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

/// A line of the feed with nothing but name, position and time stamp.
std::string lineAt(const std::string& time, const std::string& lat = "52.3", const std::string& lon = "4.7") {
    return "RTTFC,4739591," + lat + "," + lon + ",,,,,,,,,,," + time + ",X2";
}

std::vector<double> dueTimes(const Recording& recording) {
    std::vector<double> times;
    for (const RecordedRow& row : recording.rows) {
        times.push_back(row.due);
    }
    return times;
}

TEST(Recording, aRowThatBeginsWithABraceIsWeather) {
    const Recording recording = recordingFrom("{\"QNH\": 1020}\n" + lineAt("100.0") + "\n");
    ASSERT_EQ(recording.rows.size(), 2u);
    EXPECT_EQ(recording.rows[0].kind, DatagramKind::weather);
    EXPECT_EQ(recording.rows[0].text, "{\"QNH\": 1020}");
    EXPECT_EQ(recording.rows[1].kind, DatagramKind::traffic);
    EXPECT_EQ(recording.rows[1].text, lineAt("100.0"));
}

TEST(Recording, rowsAreAsReceivedButForTheirEnds) {
    const Recording recording = recordingFrom("a, b\r\n\n\nc");
    ASSERT_EQ(recording.rows.size(), 2u);
    EXPECT_EQ(recording.rows[0].text, "a, b");
    EXPECT_EQ(recording.rows[1].text, "c");
}

TEST(Recording, aRowIsDueAtTheLatestTimeStampSoFar) {
    const Recording recording =
        recordingFrom(lineAt("100") + "\n" + lineAt("90.5") + "\n" + lineAt("102.5") + "\n" + lineAt("101"));
    EXPECT_THAT(dueTimes(recording), ElementsAre(100, 100, 102.5, 102.5));
    EXPECT_EQ(recording.begin(), 100);
    EXPECT_EQ(recording.end(), 102.5);
}

TEST(Recording, rowsWithoutATimeStampAreDueWithThoseAroundThem) {
    const Recording recording =
        recordingFrom("{}\n" + lineAt("100") + "\nrubbish\n" + lineAt("null") + "\n" + lineAt("105"));
    EXPECT_THAT(dueTimes(recording), ElementsAre(100, 100, 100, 100, 105));
}

TEST(Recording, aTimeStampFarAheadIsAFaultOfItsRowAndHoldsNothingUp) {
    const Recording recording = recordingFrom(lineAt("100") + "\n" + lineAt("99999999") + "\n" + lineAt("101"));
    EXPECT_THAT(dueTimes(recording), ElementsAre(100, 100, 101));
}

TEST(Recording, aLineTellsItsPosition) {
    EXPECT_EQ(positionOf(lineAt("1", "52.25", "-4.5")), (LatLon{52.25, -4.5}));
    EXPECT_EQ(positionOf(lineAt("1", "null", "4.5")), std::nullopt);
    EXPECT_EQ(positionOf("RTTFC"), std::nullopt);
}

TEST(MovedInTime, onlyTheTimeStampChangesAndKeepsItsDecimals) {
    EXPECT_EQ(movedInTime(lineAt("1666985865.8"), 100.3), lineAt("1666985966.1"));
    EXPECT_EQ(movedInTime(lineAt("1593034598"), 2), lineAt("1593034600"));
    EXPECT_EQ(movedInTime(lineAt("5.25"), -1), lineAt("4.25"));
}

TEST(MovedInTime, aLineWithoutATimeStampStaysWhatItIs) {
    for (const std::string& line : {lineAt("null"), lineAt(""), std::string("RTTFC,1,2"), std::string()}) {
        EXPECT_EQ(movedInTime(line, 7), line);
    }
}

TEST(LoadRecording, aPackedFileAndAPlainOneHoldTheSame) {
    const TemporaryFolder folder;
    const std::string text = lineAt("100") + "\n{\"QNH\": 1020}\n";
    writeText("plain.csv", text);
    writeText("packed.csv.gz", text);
    EXPECT_EQ(readFile("plain.csv"), text);
    EXPECT_NE(readFile("packed.csv.gz"), text);
    EXPECT_EQ(loadRecording("plain.csv").rows.size(), 2u);
    EXPECT_EQ(loadRecording("packed.csv.gz").rows[1].text, "{\"QNH\": 1020}");
}

TEST(LoadRecording, aFileThatIsMissingEmptyOrDamagedIsNamed) {
    const TemporaryFolder folder;
    writeFile("empty.csv", "\n\n");
    const std::string packed = gzip(std::string(1000, 'x'));
    writeFile("cut.csv.gz", packed.substr(0, packed.size() / 2));
    for (const char* name : {"missing.csv", "empty.csv", "cut.csv.gz"}) {
        try {
            loadRecording(name);
            FAIL() << name;
        } catch (const std::runtime_error& error) {
            EXPECT_THAT(error.what(), HasSubstr(name));
        }
    }
}

TEST(Gzip, unpacksWhatItHasPacked) {
    for (const std::size_t size : {0U, 1U, 65536U, 1000000U}) {
        const std::string text(size, 'x');
        EXPECT_EQ(gunzip(gzip(text)), text) << size;
    }
}

TEST(Gzip, unpacksFilesThatWereJoined) {
    EXPECT_EQ(gunzip(gzip("first\n") + gzip("second\n")), "first\nsecond\n");
}

TEST(Gzip, packsTheSameTextIntoTheSameBytes) {
    const std::string packed = gzip("the same");
    EXPECT_EQ(gzip("the same"), packed);
    EXPECT_EQ(packed.substr(4, 4), std::string(4, '\0')) << "no time of packing";
    EXPECT_EQ(packed[9], '\xFF') << "no machine";
}

} // namespace
} // namespace rig
