// tests/distribution/check_versions_test.cpp
#include "distribution/check_versions.h"

#include <gmock/gmock.h>
#include <thread>

#include <fmt/format.h>

#include "core/exit_reason.h"
#include "core/parameter_file.h"
#include "core/parameters.h"
#include "distribution/download.h"
#include "rig/server/download_server.h"
#include "tests/support/eventually.h"
#include "tests/support/log_capture.h"
#include "tests/support/message_of.h"
#include "tests/support/sealed_input.h"
#include "window/window_state.h"

using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

namespace fs = std::filesystem;

namespace {

constexpr const char* allAtVersion2 = R"({
    "p3d": {"major": 11, "minor": 10, "patch": 8},
    "airports": {"major": 2, "minor": 0, "patch": 0},
    "aig": {"major": 2, "minor": 0, "patch": 1},
    "liveries": {"major": 2, "minor": 0, "patch": 2},
    "addons": {"major": 2, "minor": 0, "patch": 3},
    "dbase": {"major": 2, "minor": 0, "patch": 4}
})";

/// A server with version 2 of everything, and a program folder with everything installed in version 1.
class CheckVersions : public testing::Test {
protected:
    CheckVersions() {
        gf_resetExitReason();
        resetParameters();
        resetWindowState();
        setDownloadRoot(server.root());
        fs::create_directories(gf_parameterFolder());
        serve(allAtVersion2);
        for (const char* file : {"airports.enc", "AIG-regcodes.enc", "dbase.enc"}) {
            writeSealed(fmt::format("served/downloads/11/{}", file), fmt::format("new {}", file));
            writeFile(fmt::format("input/{}", file), "former");
        }
        writeFile("output/LiveriesScanned.xml", "former");
        install("1.9.9");
        SCAN_LIVERIES.value = false;
        SCAN_AIRPORTS.value = false;
    }
    ~CheckVersions() override {
        setDownloadRoot({});
        resetParameters();
        resetWindowState();
        gf_resetExitReason();
    }

    static void serve(std::string_view versions) { writeFile("served/downloads/versions.json", versions); }

    static void install(std::string_view version) {
        for (StringParameter* parameter :
             {&AIRPORTS_VERSION, &AIG_VERSION, &LIV_SCAN_VERSION, &ADDONS_SCAN_VERSION, &DBASE_VERSION}) {
            parameter->setValue(version);
        }
    }

    static bool isFormer(const char* file) { return readFile(fmt::format("input/{}", file)) == "former"; }

    static std::vector<std::string> installed() {
        return {AIRPORTS_VERSION.value(), AIG_VERSION.value(), LIV_SCAN_VERSION.value(), ADDONS_SCAN_VERSION.value(),
                DBASE_VERSION.value()};
    }

    LogCapture log;
    DownloadServer server{"served"};
};

class CheckVersionsFault : public CheckVersions, public testing::WithParamInterface<ServerFault> {};

} // namespace

TEST_F(CheckVersions, aNewerVersionIsFetchedAndRemembered) {
    EXPECT_TRUE(gf_checkVersions());
    for (const char* file : {"airports.enc", "AIG-regcodes.enc", "dbase.enc"}) {
        EXPECT_EQ(readFile(fmt::format("input/{}", file)), readFile(fmt::format("served/downloads/11/{}", file)));
    }
    EXPECT_TRUE(SCAN_LIVERIES.value);
    EXPECT_TRUE(SCAN_AIRPORTS.value);
    EXPECT_THAT(installed(), ElementsAre("2.0.0", "2.0.1", "2.0.2", "2.0.3", "2.0.4"));
    EXPECT_THAT(readFile(gf_parameterFile()), AllOf(HasSubstr(R"(name="DBASE_VERSION" value="2.0.4")"),
                                                    HasSubstr(R"(name="SCAN_LIVERIES" value="true")"),
                                                    HasSubstr(R"(name="SCAN_AIRPORTS" value="true")")));
}

TEST_F(CheckVersions, theKeysAreTakenInTheirOrder) {
    gf_checkVersions();
    EXPECT_THAT(server.requests(), ElementsAre("/downloads/versions.json", "/downloads/11/airports.enc",
                                               "/downloads/11/AIG-regcodes.enc", "/downloads/11/dbase.enc"));
    EXPECT_THAT(log.lines(),
                ElementsAre("Downloaded 'airports.enc' to 'input/airports.enc'", "AIRPORTS_VERSION=2.0.0",
                            "airports updated to 2.0.0", "Downloaded 'AIG-regcodes.enc' to 'input/AIG-regcodes.enc'",
                            "AIG_VERSION=2.0.1", "aig updated to 2.0.1", "SCAN_LIVERIES=true", "LIV_SCAN_VERSION=2.0.2",
                            "liveries updated to 2.0.2", "SCAN_AIRPORTS=true", "ADDONS_SCAN_VERSION=2.0.3",
                            "addons updated to 2.0.3", "Downloaded 'dbase.enc' to 'input/dbase.enc'",
                            "DBASE_VERSION=2.0.4", "dbase updated to 2.0.4"));
}

TEST_F(CheckVersions, theVersionFileIsDeletedAfterItsReading) {
    gf_checkVersions();
    EXPECT_FALSE(fs::exists("versions.json"));
}

TEST_F(CheckVersions, equalOrOlderVersionsWithTheirFilesAreUpToDate) {
    install("2.0.4");
    gf_checkVersions();
    EXPECT_THAT(log.lines(),
                ElementsAre("airports version up-to-date", "aig version up-to-date", "liveries version up-to-date",
                            "addons version up-to-date", "dbase version up-to-date"));
    EXPECT_TRUE(isFormer("dbase.enc"));
    EXPECT_FALSE(SCAN_LIVERIES.value);
    EXPECT_FALSE(SCAN_AIRPORTS.value);
    EXPECT_EQ(AIRPORTS_VERSION.value(), "2.0.4");
}

TEST_F(CheckVersions, areComparedAsNumbersFromTheLeft) {
    serve(R"({"airports": {"major": 1, "minor": 10, "patch": 0}, "dbase": {"major": 1, "minor": 2, "patch": 3}})");
    install("1.9.11");
    gf_checkVersions();
    EXPECT_FALSE(isFormer("airports.enc"));
    EXPECT_TRUE(isFormer("dbase.enc"));
}

TEST_F(CheckVersions, aMissingFileIsFetchedThoughTheVersionIsEqual) {
    install("2.0.4");
    fs::remove("input/dbase.enc");
    gf_checkVersions();
    EXPECT_TRUE(fs::exists("input/dbase.enc"));
    EXPECT_THAT(log.lines(), Contains("dbase updated to 2.0.4"));
    EXPECT_TRUE(isFormer("airports.enc"));
}

TEST_F(CheckVersions, aDeletedLiveriesScannedForcesAScanThoughTheVersionIsEqual) {
    install("2.0.4");
    fs::remove("output/LiveriesScanned.xml");
    gf_checkVersions();
    EXPECT_TRUE(SCAN_LIVERIES.value);
    EXPECT_FALSE(SCAN_AIRPORTS.value);
    EXPECT_THAT(log.lines(), Contains("liveries updated to 2.0.2"));
}

TEST_F(CheckVersions, aFreshInstallHasVersionZero) {
    install("");
    serve(R"({"dbase": {"major": 0, "minor": 0, "patch": 1}, "addons": {"major": 0, "minor": 0, "patch": 0}})");
    gf_checkVersions();
    EXPECT_EQ(DBASE_VERSION.value(), "0.0.1");
    EXPECT_THAT(log.lines(), Contains("addons version up-to-date"));
}

TEST_F(CheckVersions, aMissingKeyIsNamedAndSkipped) {
    serve(R"({"dbase": {"major": 2, "minor": 0, "patch": 0}})");
    gf_checkVersions();
    for (const char* key : {"airports", "aig", "liveries", "addons"}) {
        EXPECT_THAT(log.lines(), Contains(fmt::format("{} version not found", key)));
    }
    EXPECT_THAT(log.lines(), Contains("dbase updated to 2.0.0"));
    EXPECT_EQ(log.lines().front(), "p3d version not found");
}

TEST_F(CheckVersions, anInstalledVersionThatIsNoneRaises) {
    AIRPORTS_VERSION.setValue("newest");
    EXPECT_EQ(messageOf([] { gf_checkVersions(); }), "invalid version format");
    AIRPORTS_VERSION.setValue("99999999999.0.0");
    EXPECT_EQ(messageOf([] { gf_checkVersions(); }), "parse error in version string");
    EXPECT_FALSE(fs::exists("versions.json"));
}

TEST_F(CheckVersions, withoutANetworkTheProgramStartsWithTheInstalledData) {
    setDownloadRoot("http://127.0.0.1:1/");
    EXPECT_TRUE(gf_checkVersions());
    EXPECT_THAT(log.errors(), ElementsAre("==> Downloading version info from my web site failed!"));
    EXPECT_TRUE(isFormer("dbase.enc"));
    EXPECT_THAT(installed(), testing::Each("1.9.9"));
}

TEST_F(CheckVersions, aPageInPlaceOfTheVersionsCountsAsAFailedDownload) {
    server.setFault(ServerFault::otherPage, "versions.json");
    EXPECT_TRUE(gf_checkVersions());
    EXPECT_THAT(log.lines(), ElementsAre("==> Downloading version info from my web site failed!"));
    EXPECT_FALSE(fs::exists("versions.json"));
    EXPECT_THAT(installed(), testing::Each("1.9.9"));
}

TEST_F(CheckVersions, aFailedDownloadChangesNothingAndTheNextStartTriesAgain) {
    server.setFault(ServerFault::notFound, "dbase.enc");
    EXPECT_TRUE(gf_checkVersions());
    EXPECT_TRUE(isFormer("dbase.enc"));
    EXPECT_EQ(DBASE_VERSION.value(), "1.9.9");
    EXPECT_THAT(log.lines(), AllOf(Contains("Downloading 'dbase.enc' failed !"), Contains("airports updated to 2.0.0"),
                                   Not(Contains("dbase updated to 2.0.4"))));
    server.setFault(ServerFault::none);
    gf_checkVersions();
    EXPECT_EQ(DBASE_VERSION.value(), "2.0.4");
}

TEST_P(CheckVersionsFault, leavesTheProgramWithWhatItHad) {
    server.setFault(GetParam());
    EXPECT_TRUE(gf_checkVersions());
    EXPECT_THAT(log.errors(), ElementsAre("==> Downloading version info from my web site failed!"));
    server.setFault(GetParam(), ".enc");
    EXPECT_TRUE(gf_checkVersions());
    for (const char* file : {"airports.enc", "AIG-regcodes.enc", "dbase.enc"}) {
        EXPECT_TRUE(isFormer(file)) << file;
    }
    EXPECT_EQ(AIRPORTS_VERSION.value(), "1.9.9");
    EXPECT_EQ(AIG_VERSION.value(), "1.9.9");
    EXPECT_EQ(DBASE_VERSION.value(), "1.9.9");
}

INSTANTIATE_TEST_SUITE_P(ofTheServer, CheckVersionsFault,
                         testing::Values(ServerFault::notFound, ServerFault::serverError, ServerFault::redirect,
                                         ServerFault::halfBody, ServerFault::halfLength, ServerFault::doubleLength,
                                         ServerFault::otherPage));

TEST_F(CheckVersions, aSlowServerRenewsEverything) {
    server.setFault(ServerFault::slow);
    EXPECT_TRUE(gf_checkVersions());
    EXPECT_THAT(installed(), ElementsAre("2.0.0", "2.0.1", "2.0.2", "2.0.3", "2.0.4"));
    EXPECT_GE(server.slowPieces(), 4U * 10) << "the version file and three data files, each in many pieces";
}

TEST_F(CheckVersions, aServerThatDoesNotGoOnIsLeftWithTheStopFlag) {
    server.setFault(ServerFault::stall, "airports.enc");
    std::thread stopper([this] {
        eventually([this] { return server.requests().size() == 2; });
        gf_stopRun(ExitReason::userClosed, 0);
    });
    EXPECT_TRUE(gf_checkVersions());
    stopper.join();
    for (const char* file : {"airports.enc", "AIG-regcodes.enc", "dbase.enc"}) {
        EXPECT_TRUE(isFormer(file)) << file;
    }
    EXPECT_EQ(AIRPORTS_VERSION.value(), "1.9.9");
}

TEST_F(CheckVersions, noMessageIsLeftStanding) {
    gf_checkVersions();
    EXPECT_EQ(shownMessage(), "");
}

TEST(WebVersions, areReadByKey) {
    const auto versions = parseWebVersions(allAtVersion2);
    ASSERT_TRUE(versions);
    EXPECT_EQ(versions->size(), 6U);
    EXPECT_EQ(versions->at("p3d"), (ProgramVersion{11, 10, 8}));
}

TEST(WebVersions, whatIsNoVersionIsLeftOut) {
    const auto versions = parseWebVersions(R"({"a": 1, "b": "1.2.3", "c": {"major": 1, "minor": 2}, "d": null,
        "e": {"major": "1", "minor": 2, "patch": 3}, "f": {"major": 1.5, "minor": 2, "patch": 3},
        "g": {"major": -1, "minor": 2, "patch": 3}, "h": {"major": 99999999999, "minor": 2, "patch": 3},
        "i": {"major": 18446744073709551615, "minor": 2, "patch": 3}, "j": {"major": 1, "minor": 2, "patch": 3}})");
    ASSERT_TRUE(versions);
    EXPECT_THAT(*versions, ElementsAre(testing::Pair("j", ProgramVersion{1, 2, 3})));
}

TEST(WebVersions, areNoneInATextThatIsNoJsonObject) {
    EXPECT_FALSE(parseWebVersions(""));
    EXPECT_FALSE(parseWebVersions("<html>"));
    EXPECT_FALSE(parseWebVersions("[1, 2]"));
    EXPECT_FALSE(parseWebVersions(R"({"dbase": {"major": 1)"));
}
