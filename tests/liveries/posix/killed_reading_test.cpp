// tests/liveries/posix/killed_reading_test.cpp
// The reading of the reference data and the airports, killed at each of its system calls in turn.
#include <filesystem>
#include <gmock/gmock.h>

#include <fmt/format.h>

#include "distribution/clear_file.h"
#include "liveries/reference_data.h"
#include "liveries/reference_tables.h"
#include "parking/airport_directory.h"
#include "tests/support/log_capture.h"
#include "tests/support/posix/killed_process.h"
#include "tests/support/reference_xml.h"
#include "tests/support/sealed_input.h"

namespace fs = std::filesystem;

namespace {

/// Several chunks long, so that the clear file is written and read in more than one piece.
std::string longText() {
    std::string rows;
    for (int i = 0; i < 600; ++i) {
        rows += fmt::format(R"(<db reg="PH-{}" airl="KLM" type="B738"/>)", i);
    }
    return ReferenceXml().with("dbase", rows).text();
}

bool readIsKilledAfter(int stops) {
    return isKilledAfter(stops, [] {
        gf_readDataFiles();
        gf_readAirports();
    });
}

bool aClearFileIsThere() {
    return fs::exists("input/dbase.xml") || fs::exists("input/airports.xml");
}

void writeDataFiles() {
    writeSealed("input/dbase.enc", longText());
    writeSealed("input/airports.enc",
                R"(<airports><airport code="EHAM" iata="AMS" lat="52.3" lon="4.7" alt="-11" stands="2"/></airports>)");
}

void resetTables() {
    resetReferenceTables();
    resetAirportDirectory();
}

} // namespace

TEST(KilledReading, leavesNoClearFileBehindTheNextStart) {
    if (!canTrace()) {
        GTEST_SKIP() << "this machine lets no process trace another";
    }
    const LogCapture log;
    resetTables();
    writeDataFiles();
    int leftOver = 0;
    for (int stops = 1; readIsKilledAfter(stops); ++stops) {
        leftOver += aClearFileIsThere() ? 1 : 0;
        gf_removeLeftOverClearFiles();
        ASSERT_FALSE(aClearFileIsThere()) << stops;
    }
    EXPECT_GT(leftOver, 10) << "the killing was meant to hit the time when a clear file is there";
    EXPECT_TRUE(gf_readDataFiles());
    EXPECT_TRUE(gf_readAirports());
    EXPECT_EQ(DbaseTable.size(), 600U);
    EXPECT_FALSE(aClearFileIsThere());
    resetTables();
}

TEST(KilledReading, isMadeGoodByTheNextReading) {
    const LogCapture log;
    resetTables();
    writeDataFiles();
    for (const char* file : {"input/dbase.xml", "input/airports.xml"}) {
        writeFile(file, "left over by a killed process, and longer than any other: " + std::string(100000, 'x'));
    }
    EXPECT_TRUE(gf_readDataFiles());
    EXPECT_TRUE(gf_readAirports());
    EXPECT_FALSE(aClearFileIsThere());
    resetTables();
}
