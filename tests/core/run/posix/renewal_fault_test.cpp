// A start with older data installed, against a server with each of its faults in each file. Only here, where a start
// takes no seconds; a download by itself meets the faults everywhere.
#include <gtest/gtest.h>

#include <algorithm>
#include <string_view>
#include <tuple>
#include <vector>

#include "tests/core/run/data_renewal.h"

namespace {

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
