// tests/liveries/livery_driver_test.cpp
#include "liveries/livery_driver.h"

#include <algorithm>

#include "core/user_error.h"
#include "liveries/livery_file.h"
#include "liveries/livery_matching.h"
#include "liveries/livery_tables.h"
#include "tests/liveries/scan_test.h"

using testing::IsEmpty;

namespace {

constexpr const char* skipped = "Processing scanned liveries skipped; already done in previous start-up";
constexpr const char* readLine = "1 liveries read from output\\LiveriesScanned.xml";

class LiveryDriver : public ScanTest {
public:
    LiveryDriver() {
        resetLiveryDriver();
        makeAircraft("x/ac", general("A320") + section(0, "title=One\natc_parking_codes=KLM"));
        setFolder(0, "x");
    }
    ~LiveryDriver() override { resetLiveryDriver(); }
    LiveryDriver(const LiveryDriver&) = delete;
    LiveryDriver& operator=(const LiveryDriver&) = delete;

protected:
    std::size_t times(const char* line) const {
        const std::vector<std::string> lines = log_.lines();
        return static_cast<std::size_t>(std::count(lines.begin(), lines.end(), line));
    }
};

/// For the thread sanitizer: two threads read the file and build the tables.
class LiveryDriverThreads : public LiveryDriver {};

} // namespace

TEST_F(LiveryDriverThreads, manyLiveriesStandInTheTablesThatTwoThreadsBuild) {
    constexpr int liveriesOfEach = 500;
    gIcaoAirlines = {"KLM", "DLH", "AFR"};
    gSimilarGroups = {{"A320", "B738"}, {"B744", "T154"}};
    Liveries.clear();
    for (const char* airline : {"AFR", "DLH", "KLM"}) {
        for (const char* type : {"A320", "B744"}) {
            for (int i = 0; i < liveriesOfEach; ++i) {
                const std::string number = std::to_string(10000 + i);
                const std::string title = std::string(airline) + type + number;
                Liveries.push_back({airline, type, title, type + number, 1, i % 5 == 0});
            }
        }
    }
    const std::size_t count = Liveries.size();
    lf_writeLiveries();
    gf_processScannedLiveries();
    EXPECT_EQ(static_cast<std::size_t>(gWindowState.liveries), count);
    EXPECT_EQ(lf_findTitle("KLMB74410499"), "KLMB74410499");
    EXPECT_EQ(ModelTable[cargoIndex].find("A320")->second.titles.size(), 3u * liveriesOfEach / 5);
    EXPECT_EQ(RegcodeTable.size(), 2u * liveriesOfEach) << "those of the first airline stand";
    EXPECT_EQ(gf_similarForAirline("DLH", "T154")[0].type, "B744");
    EXPECT_EQ(gf_similarOfType("B738")[0].type, "A320");
}

TEST_F(LiveryDriver, readsTheFileAndFreesTheList) {
    gf_scanLiveries();
    gf_processScannedLiveries();
    EXPECT_EQ(times(readLine), 1);
    EXPECT_EQ(times(skipped), 0);
    EXPECT_THAT(Liveries, IsEmpty());
}

TEST_F(LiveryDriver, aRepeatedStartUpSkips) {
    gf_scanLiveries();
    gf_processScannedLiveries();
    gf_processScannedLiveries();
    EXPECT_EQ(times(readLine), 1);
    EXPECT_EQ(times(skipped), 1);
}

TEST_F(LiveryDriver, aNewScanIsProcessed) {
    gf_scanLiveries();
    gf_processScannedLiveries();
    gf_scanLiveries();
    gf_processScannedLiveries();
    EXPECT_EQ(times(readLine), 2);
    EXPECT_EQ(times(skipped), 0);
}

TEST_F(LiveryDriver, ofTheScanBeforeNothingIsLeft) {
    gf_scanLiveries();
    gf_processScannedLiveries();
    makeAircraft("x/ac", general("A320") + section(0, "title=Two\natc_parking_codes=KLM\natc_id=PH-ABC"));
    gf_scanLiveries();
    gf_processScannedLiveries();
    EXPECT_EQ(lf_findTitle("One"), "");
    EXPECT_EQ(lf_findTitle("Two"), "Two");
    EXPECT_EQ(RegcodeTable.find("PH-ABC")->second, "Two");
    EXPECT_THAT(ModelTable[passengerIndex].find("A320")->second.titles, testing::ElementsAre("Two"));
}

TEST_F(LiveryDriver, similarTypesGoByTheLiveriesOfEachScan) {
    gSimilarGroups = {{"A320", "B738"}};
    gf_scanLiveries();
    gf_processScannedLiveries();
    ASSERT_EQ(gf_similarForAirline("KLM", "B738").size(), 1u);
    EXPECT_EQ(gf_similarForAirline("KLM", "B738")[0].type, "A320");
    EXPECT_EQ(gf_similarOfType("B738").size(), 1u);
    makeAircraft("x/ac", general("B738") + section(0, "title=Two\natc_parking_codes=KLM"));
    gf_scanLiveries();
    gf_processScannedLiveries();
    EXPECT_THAT(gf_similarForAirline("KLM", "B738"), IsEmpty());
    ASSERT_EQ(gf_similarForAirline("KLM", "A320").size(), 1u);
    EXPECT_EQ(gf_similarForAirline("KLM", "A320")[0].type, "B738");
}

TEST_F(LiveryDriver, theStepsComeInTheirOrder) {
    writeFile("input/my_regcodes/mine.txt", "Of nobody;PH-XYZ\n");
    makeAircraft("x/ac", general("A320") + section(0, "title=One\natc_parking_codes=KLM\natc_id=PH-ABC") +
                             section(1, "title=Two\natc_parking_codes=KLM\natc_id=PH-ABC"));
    gf_scanLiveries();
    gf_processScannedLiveries();
    const std::vector<std::string> lines = log_.lines();
    auto from = lines.begin();
    for (const char* begin : {"2 liveries read from ", "1 in-line regcode clashes, see ", "Processing regcodes file ",
                              "1 registration codes", "1 airlines, 1 pax ", "0 similar model definitions",
                              "Category Light: ", "Category Rotorcraft: ", "No generic liveries"}) {
        from = std::find_if(from, lines.end(), [begin](const std::string& line) { return line.starts_with(begin); });
        ASSERT_NE(from, lines.end()) << begin << " in " << testing::PrintToString(lines);
    }
}

TEST_F(LiveryDriver, onlyANewScanMakesTheMatchesOfLiveAircraftOutOfDate) {
    gf_scanLiveries();
    gf_processScannedLiveries();
    hexidLiveries[20000] = lf_findTitle("One");
    gf_processScannedLiveries();
    EXPECT_EQ(hexidLiveries[20000], "One");
    gf_scanLiveries();
    gf_processScannedLiveries();
    EXPECT_TRUE(hexidLiveries.empty());
}

TEST_F(LiveryDriver, theListIsFreedWhateverBecomesOfTheProcessing) {
    Liveries = {{"KLM", "A320", "left over", "", 1, false}};
    EXPECT_THROW(gf_processScannedLiveries(), kvd::UserErrorException);
    EXPECT_THAT(Liveries, IsEmpty());
    gf_scanLiveries();
    gf_processScannedLiveries();
    Liveries = {{"KLM", "A320", "left over", "", 1, false}};
    gf_processScannedLiveries();
    EXPECT_EQ(times(skipped), 1);
    EXPECT_THAT(Liveries, IsEmpty());
}

TEST_F(LiveryDriver, aFailureIsNoProcessing) {
    EXPECT_THROW(gf_processScannedLiveries(), kvd::UserErrorException);
    gf_scanLiveries();
    takeNewScan();
    gf_processScannedLiveries();
    EXPECT_EQ(times(readLine), 1);
}
