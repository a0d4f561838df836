// tests/core/run/data_renewal.h
// The whole program with older data installed, and a server that holds newer ones as a maintainer builds and publishes
// them.
#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <gtest/gtest.h>
#include <map>
#include <sstream>
#include <string>

#include <fmt/format.h>

#include "core/detached_threads.h"
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
#include "tests/support/scannable_livery.h"
#include "tests/support/sealed_input.h"
#include "tools/build.h"
#include "tools/publish.h"
#include "window/window_state.h"

inline constexpr const char* versionFile = "versions.json";

/// A data file of the program, and how its tables show which one was read.
struct DataFile {
    const char* key;
    const char* name;
    StringParameter& version;
    bool (*hasOlder)();
    bool (*hasNewer)();
};

inline const std::array<DataFile, 3> dataFiles{{
    {"airports", "airports.enc", AIRPORTS_VERSION, [] { return is_supported_airport("EHAM"); },
     [] { return is_supported_airport("LFPG"); }},
    {"aig", "AIG-regcodes.enc", AIG_VERSION, [] { return RegcodeTable.contains("PH-OLD"); },
     [] { return RegcodeTable.contains("PH-NEW"); }},
    {"dbase", "dbase.enc", DBASE_VERSION, [] { return gf_findRegcodeRecord("OO-OLD").has_value(); },
     [] { return gf_findRegcodeRecord("OO-NEW").has_value(); }},
}};

inline std::string aigText(const char* reg) {
    return fmt::format(
        R"(<root><meta/><AIG-regcodes><livery title="KLM A320" reg="{0}"/><livery title="Scanned B738" reg="{0}"/>)"
        R"(</AIG-regcodes></root>)",
        reg);
}

/// Tables as a maintainer finds them, built and published as version 2.0.0 in "served".
inline void buildAndPublish() {
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

/// Version 1.0.0 of all data is installed, and version 2.0.0 is on the server. Time runs by the program's own sleeps.
class RenewalThreads : public testing::Test {
public:
    RenewalThreads(const RenewalThreads&) = delete;
    RenewalThreads& operator=(const RenewalThreads&) = delete;

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
            return run.quitCode() && gf_waitForDetachedThreads(std::chrono::milliseconds(0));
        });
    }

    /// Data files of version 1.0.0, and scans of this one.
    void install(const char* scans) {
        writeScannableLivery();
        run.setParameters({{"SIM_INSTALL_PATH", platform::utf8FromPath(run.folder() / "Sim v5")},
                           {"lfolder0", platform::utf8FromPath(run.folder() / "aircraft")},
                           {"AIRPORTS_VERSION", "1.0.0"},
                           {"AIG_VERSION", "1.0.0"},
                           {"DBASE_VERSION", "1.0.0"},
                           {"LIV_SCAN_VERSION", scans},
                           {"ADDONS_SCAN_VERSION", scans}});
    }

    static std::filesystem::path input(const DataFile& file) { return std::filesystem::path("input") / file.name; }
    static std::string served(const DataFile& file) {
        return readFile(std::filesystem::path("served/downloads/11") / file.name);
    }

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
        EXPECT_FALSE(std::filesystem::exists("versions.json"));
        EXPECT_FALSE(std::filesystem::exists("versions.json.part"));
        for (const auto& entry : std::filesystem::directory_iterator("input")) {
            EXPECT_TRUE(entry.is_directory() || entry.path().extension() == ".enc") << entry.path();
        }
    }

    platform::ManualClock clock{std::chrono::sys_days(std::chrono::year(2026) / 11 / 21)};
    ProgramRun run;
    RunningSimulator simulator;
    DownloadServer server{"served"};
    std::map<std::string, std::string> installed; // the bytes of the data files

private:
    platform::DatagramSocket socket_;
};
