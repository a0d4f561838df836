// A start with older data installed, against a server as it should be.
#include <gmock/gmock.h>

#include "core/parameter_file.h"
#include "tests/core/run/data_renewal.h"

using testing::HasSubstr;

namespace {

TEST_F(RenewalThreads, everyFileIsRenewedAndEveryScanIsMadeAnew) {
    install("1.0.0");
    startAndRun();
    for (const DataFile& file : dataFiles) {
        expectRenewed(file);
    }
    expectNothingElse();
    EXPECT_TRUE(gf_isIcaoAirline("NEW"));
    EXPECT_EQ(lf_findTitle("Scanned B738"), "Scanned B738") << run.log();
    EXPECT_EQ(lf_findTitle("White B738"), "") << "the former scan's";
    EXPECT_TRUE(SCAN_AIRPORTS.value);
    EXPECT_EQ(LIV_SCAN_VERSION.value(), "2.0.0");
    EXPECT_EQ(ADDONS_SCAN_VERSION.value(), "2.0.0");
    const std::string parameters = readFile(gf_parameterFile());
    for (const char* name :
         {"AIRPORTS_VERSION", "AIG_VERSION", "DBASE_VERSION", "LIV_SCAN_VERSION", "ADDONS_SCAN_VERSION"}) {
        EXPECT_THAT(parameters, HasSubstr(fmt::format(R"(name="{}" value="2.0.0")", name)));
    }
}

TEST_F(RenewalThreads, aServerThatIsSlowRenewsEveryFile) {
    server.setFault(ServerFault::slow);
    startAndRun();
    for (const DataFile& file : dataFiles) {
        expectRenewed(file);
    }
    EXPECT_GE(server.slowPieces(), 4U * 10) << "the version file and three data files, each in many pieces";
}

TEST_F(RenewalThreads, whatIsUpToDateIsNotAskedForAgain) {
    startAndRun();
    ASSERT_TRUE(close()) << run.log();
    resetProgram();
    setDownloadRoot(server.root());
    startAndRun();
    EXPECT_THAT(server.requests(), testing::ElementsAre("/downloads/versions.json", "/downloads/11/airports.enc",
                                                        "/downloads/11/AIG-regcodes.enc", "/downloads/11/dbase.enc",
                                                        "/downloads/versions.json"));
    for (const DataFile& file : dataFiles) {
        EXPECT_TRUE(file.hasNewer()) << file.name;
    }
}

} // namespace
