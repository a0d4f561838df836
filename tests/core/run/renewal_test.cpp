// The whole program with older data installed, against a server that holds newer ones as a maintainer builds and publishes
// them: with a server as it should be every file is renewed, and with each of its faults the program runs on what it had.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <map>
#include <sstream>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include <fmt/format.h>

#include "core/detached_threads.h"
#include "core/parameter_file.h"
#include "core/parameters.h"
#include "core/run/start_run.h"
#include "core/slot_clock.h"
#include "distribution/download.h"
#include "liveries/livery_tables.h"
#include "liveries/reference_tables.h"
#include "parking/airport_directory.h"
#include "platform/clock.h"
#include "platform/files.h"
#include "platform/sockets.h"
#include "platform/window_system.h"
#include "rig/server/download_server.h"
#include "tests/core/run/running_simulator.h"
#include "tests/support/eventually.h"
#include "tests/support/program_run.h"
#include "tests/support/reference_xml.h"
#include "tests/support/sealed_input.h"
#include "tools/build.h"
#include "tools/publish.h"
#include "window/window_state.h"

using namespace std::chrono;
using namespace std::chrono_literals;
using testing::HasSubstr;

namespace fs = std::filesystem;

namespace {

constexpr const char* versionFile = "versions.json";
constexpr platform::WallTime noon = sys_days(2026y / November / 21) + 12h;

/// A data file of the program, and how its tables show which one was read.
struct DataFile {
    const char* key;
    const char* name;
    StringParameter& version;
    bool (*hasOlder)();
    bool (*hasNewer)();
};

const std::array<DataFile, 3> dataFiles{{
    {"airports", "airports.enc", AIRPORTS_VERSION, [] { return is_supported_airport("EHAM"); },
     [] { return is_supported_airport("LFPG"); }},
    {"aig", "AIG-regcodes.enc", AIG_VERSION, [] { return RegcodeTable.contains("PH-OLD"); },
     [] { return RegcodeTable.contains("PH-NEW"); }},
    {"dbase", "dbase.enc", DBASE_VERSION, [] { return gf_findRegcodeRecord("OO-OLD").has_value(); },
     [] { return gf_findRegcodeRecord("OO-NEW").has_value(); }},
}};

std::string aigText(const char* reg) {
    return fmt::format(
        R"(<root><meta/><AIG-regcodes><livery title="KLM A320" reg="{0}"/><livery title="Scanned B738" reg="{0}"/>)"
        R"(</AIG-regcodes></root>)",
        reg);
}

/// Tables as a maintainer finds them, built and published as version 2.0.0 in "served".
void buildAndPublish() {
    writeFile("tables/types.json", R"({"A320": ["AIRBUS", "L2J", "M"], "B738": ["BOEING", "L2J", "M"],
        "B744": ["BOEING", "L4J", "H"], "C172": ["CESSNA", "L1P", "L"], "F16": ["FALCON", "L1J", "M"],
        "EC35": ["EUROCOPTER", "H2T", "L"], "GLF5": ["GULFSTREAM", "L2J", "M"]})");
    writeFile("tables/airports.csv", "icao,iata,lat,lon,alt\nLFPG,CDG,49.01,2.55,392\n");
    writeFile("tables/spans.csv", "icao;wingspan\nA320;35.8\n");
    writeFile("tables/airlines.csv", "Company,3Ltr\nRoyal Dutch,KLM\nNewcomer,NEW\n");
    writeFile("tables/aircraft.json", R"({"484506": ["OO-NEW", "A320", "00"]})");
    writeFile("tables/extra.xml", ReferenceXml().without("aircrafts").without("ICAO_airlines").text());
    std::ostringstream report;
    buildDataFiles({"tables/airports.csv",
                    "tables/types.json",
                    {"tables/spans.csv"},
                    {"tables/airlines.csv"},
                    {"tables/aircraft.json"},
                    "tables/extra.xml",
                    ""},
                   "built", report);
    writeFile("built/AIG-regcodes.xml", aigText("PH-NEW"));
    publishDownloads("built", {2, 0, 0}, "served", gf_dataKey());
}

/// Version 1.0.0 of everything is installed, and version 2.0.0 is on the server. Time runs by the program's own sleeps.
class RenewalThreads : public testing::Test {
protected:
    RenewalThreads() {
        buildAndPublish();
        writeSealed("input/dbase.enc", ReferenceXml().with("dbase", R"(<db reg="OO-OLD" airl="KLM"/>)").text());
        writeSealed("input/AIG-regcodes.enc", aigText("PH-OLD"));
        for (const DataFile& file : dataFiles) {
            installed[file.name] = readFile(input(file));
        }
        install("2.0.0");
        setDownloadRoot(server.root());
        platform::startSocketLibrary();
        socket_.create();
    }
    ~RenewalThreads() override {
        close();
        socket_.shutDownAndClose();
        platform::cleanUpSocketLibrary();
    }

    /// The user closes the program. A reader to which nothing comes would notice that after a second only.
    bool close() {
        window_system::clickClose();
        return eventually([&] {
            for (const std::uint16_t port : {trafficPort, weatherPort}) {
                socket_.sendToThisMachine(port, "nothing");
            }
            return run.quitCode() && gf_waitForDetachedThreads(0ms);
        });
    }

    /// Data files of version 1.0.0, and scans of this one.
    void install(const char* scans) {
        writeFile("aircraft/KLM B738/aircraft.cfg",
                  "[fltsim.0]\ntitle=Scanned B738\nsim=ai\nmodel=\ntexture=KLM\natc_parking_codes=KLM\n"
                  "[General]\natc_model=B738\n");
        writeFile("aircraft/KLM B738/ai.air", "");
        fs::create_directories("aircraft/KLM B738/model");
        fs::create_directories("aircraft/KLM B738/texture.KLM");
        run.setParameters({{"SIM_INSTALL_PATH", platform::utf8FromPath(run.folder() / "Sim v5")},
                           {"lfolder0", platform::utf8FromPath(run.folder() / "aircraft")},
                           {"AIRPORTS_VERSION", "1.0.0"},
                           {"AIG_VERSION", "1.0.0"},
                           {"DBASE_VERSION", "1.0.0"},
                           {"LIV_SCAN_VERSION", scans},
                           {"ADDONS_SCAN_VERSION", scans}});
    }

    static fs::path input(const DataFile& file) { return fs::path("input") / file.name; }
    static std::string served(const DataFile& file) { return readFile(fs::path("served/downloads/11") / file.name); }

    /// The program starts, meets a simulator and runs its loop.
    void startAndRun() {
        run.start();
        ASSERT_TRUE(eventually([] { return slotClock > 10; })) << run.log();
        EXPECT_EQ(shownError(), "");
    }

    void expectRenewed(const DataFile& file) {
        SCOPED_TRACE(file.name);
        EXPECT_EQ(readFile(input(file)), served(file));
        EXPECT_EQ(file.version.value(), "2.0.0");
        EXPECT_TRUE(run.logs(fmt::format("{} updated to 2.0.0", file.key)));
        EXPECT_TRUE(file.hasNewer());
        EXPECT_FALSE(file.hasOlder());
    }

    void expectAsItWas(const DataFile& file) {
        SCOPED_TRACE(file.name);
        EXPECT_EQ(readFile(input(file)), installed[file.name]);
        EXPECT_EQ(file.version.value(), "1.0.0");
        EXPECT_FALSE(run.logs(fmt::format("{} updated to", file.key)));
        EXPECT_TRUE(file.hasOlder());
        EXPECT_FALSE(file.hasNewer());
    }

    /// Nothing of a transfer, and no clear text.
    static void expectNothingElse() {
        EXPECT_FALSE(fs::exists("versions.json"));
        EXPECT_FALSE(fs::exists("versions.json.part"));
        for (const auto& entry : fs::directory_iterator("input")) {
            EXPECT_TRUE(entry.is_directory() || entry.path().extension() == ".enc") << entry.path();
        }
    }

    platform::ManualClock clock{noon};
    ProgramRun run;
    RunningSimulator simulator;
    DownloadServer server{"served"};
    std::map<std::string, std::string> installed; // the bytes of the data files

private:
    platform::DatagramSocket socket_;
};

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

// --- A server with a fault ---

/// A fault after which the server's answer is no file, and how the log tells what became of the transfer.
struct Fault {
    const char* word;
    std::string_view cause;
};

constexpr std::string_view wrongStatus = "Download error: 'HTTP response code said error' for {}";
constexpr std::string_view partial = "Download error: 'Transferred a partial file' for {}";
/// The transfer looks well: what came is looked at.
constexpr std::string_view arrives = "";

class RenewalFaultThreads : public RenewalThreads, public testing::WithParamInterface<std::tuple<Fault, const char*>> {
protected:
    const Fault fault = std::get<0>(GetParam());
    const std::string faultyFile = std::get<1>(GetParam());
    const bool isVersionFile = faultyFile == versionFile;

    void expectWarnings() {
        if (isVersionFile) {
            expectCause("downloads/versions.json");
            EXPECT_TRUE(run.logs("\n==> Downloading version info from my web site failed!\n")) << run.log();
            return;
        }
        expectCause("downloads/11/" + faultyFile);
        EXPECT_EQ(run.logs(fmt::format("\n'{}' is incomplete, or sealed for another program\n", faultyFile)),
                  fault.cause == arrives)
            << run.log();
        EXPECT_TRUE(run.logs(fmt::format("\nDownloading '{}' failed !\n", faultyFile))) << run.log();
    }

    void expectCause(const std::string& path) {
        const std::string cause = fmt::format(fmt::runtime(fault.cause), server.root() + path);
        EXPECT_EQ(run.logs("Download error: "), fault.cause != arrives) << run.log();
        EXPECT_TRUE(run.logs(cause)) << run.log();
    }
};

TEST_P(RenewalFaultThreads, leavesTheProgramRunningOnWhatItHad) {
    server.setFault(faultOfWord(fault.word).value(), faultyFile);
    startAndRun();
    expectWarnings();
    for (const DataFile& file : dataFiles) {
        if (isVersionFile || file.name == faultyFile) {
            expectAsItWas(file);
        } else {
            expectRenewed(file);
        }
    }
    expectNothingElse();
}

/// "length_half_in_dbase_enc", for only such characters may stand in a test's name.
std::string caseName(std::string text) {
    std::replace_if(
        text.begin(), text.end(), [](char c) { return c == '-' || c == '.'; }, '_');
    return text;
}

INSTANTIATE_TEST_SUITE_P(
    ofTheServer, RenewalFaultThreads,
    testing::Combine(testing::Values(Fault{"404", wrongStatus}, Fault{"500", wrongStatus},
                                     Fault{"redirect", wrongStatus}, Fault{"half", partial},
                                     Fault{"length-double", partial}, Fault{"length-half", arrives},
                                     Fault{"page", arrives}),
                     testing::Values(versionFile, "airports.enc", "AIG-regcodes.enc", "dbase.enc")),
    [](const auto& each) {
        return caseName(fmt::format("{}_in_{}", std::get<0>(each.param).word, std::get<1>(each.param)));
    });

// --- A server that sends half and no more ---

class RenewalStallThreads : public RenewalThreads, public testing::WithParamInterface<const char*> {};

TEST_P(RenewalStallThreads, endsWithTheUsersPatienceAndTheNextStartRenewsWhatIsLeft) {
    const std::string stalled = GetParam();
    server.setFault(ServerFault::stall, stalled);
    run.start();
    ASSERT_TRUE(eventually([&] {
        const std::vector<std::string> asked = server.requests();
        return !asked.empty() && asked.back().ends_with(stalled);
    })) << run.log();
    EXPECT_EQ(shownMessage(),
              stalled == versionFile ? "Looking for new data ..." : fmt::format("Downloading {} ...", stalled));
    ASSERT_TRUE(close()) << run.log();
    EXPECT_TRUE(run.logs("Download error: 'Operation was aborted by an application callback'")) << run.log();
    EXPECT_TRUE(run.logs("Exiting: USER CLOSED SIM")) << run.log();
    bool isBehind = stalled == versionFile;
    for (const DataFile& file : dataFiles) {
        isBehind = isBehind || file.name == stalled;
        EXPECT_EQ(readFile(input(file)), isBehind ? installed[file.name] : served(file)) << file.name;
        EXPECT_EQ(file.version.value(), isBehind ? "1.0.0" : "2.0.0") << file.name;
    }
    expectNothingElse();

    resetProgram();
    setDownloadRoot(server.root());
    server.setFault(ServerFault::none);
    startAndRun();
    for (const DataFile& file : dataFiles) {
        EXPECT_EQ(readFile(input(file)), served(file));
        EXPECT_TRUE(file.hasNewer()) << file.name;
    }
}

INSTANTIATE_TEST_SUITE_P(ofTheServer, RenewalStallThreads,
                         testing::Values(versionFile, "airports.enc", "AIG-regcodes.enc", "dbase.enc"),
                         [](const auto& each) { return caseName(each.param); });

} // namespace
