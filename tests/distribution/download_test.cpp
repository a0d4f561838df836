// tests/distribution/download_test.cpp
#include "distribution/download.h"

#include <gmock/gmock.h>
#include <thread>

#include <fmt/format.h>

#include "core/exit_reason.h"
#include "rig/server/download_server.h"
#include "tests/support/eventually.h"
#include "tests/support/log_capture.h"
#include "tests/support/sealed_input.h"

using testing::Contains;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

namespace fs = std::filesystem;

namespace {

/// A server with a folder of its own, and a program that asks it.
class Download : public testing::Test {
protected:
    Download() {
        setDownloadRoot(server.root());
        gf_resetExitReason();
    }
    ~Download() override {
        setDownloadRoot({});
        gf_resetExitReason();
    }

    bool fetch(const std::string& path, const fs::path& target, DownloadMode mode = DownloadMode::binary) {
        return lf_downloadTo(handle.get(), gf_downloadUrl(path), target, mode);
    }

    /// The target and nothing beside it.
    std::vector<std::string> filesOf(const fs::path& target) {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(target)) {
            names.push_back(entry.path().filename().string());
        }
        return names;
    }

    LogCapture log;
    DownloadServer server{"served"};
    DownloadHandle handle = gf_newDownloadHandle();
};

const std::string someBytes("some\0bytes\r\n and \n more", 22);

struct Fault {
    ServerFault fault;
    const char* text;
};

class DownloadFault : public Download, public testing::WithParamInterface<Fault> {};

} // namespace

TEST_F(Download, writesTheBodyAsItIs) {
    writeFile("served/downloads/a.bin", someBytes);
    fs::create_directory("target");
    EXPECT_TRUE(fetch("downloads/a.bin", "target/a.bin"));
    EXPECT_EQ(readFile("target/a.bin"), someBytes);
    EXPECT_THAT(filesOf("target"), ElementsAre("a.bin"));
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(Download, replacesAFormerFile) {
    writeFile("served/a.bin", "new");
    writeFile("a.bin", "a longer former file");
    EXPECT_TRUE(fetch("a.bin", "a.bin"));
    EXPECT_EQ(readFile("a.bin"), "new");
}

TEST_F(Download, inTextModeHoldsTheLines) {
    writeFile("served/a.txt", "one\ntwo\n");
    EXPECT_TRUE(fetch("a.txt", "a.txt", DownloadMode::text));
    EXPECT_THAT(readFile("a.txt"), testing::AnyOf("one\ntwo\n", "one\r\ntwo\r\n"));
}

TEST_F(Download, namesItsUserAgent) {
    writeFile("served/a.bin", "x");
    fetch("a.bin", "a.bin");
    EXPECT_THAT(server.userAgents(), ElementsAre("TRNW"));
}

TEST_F(Download, ofSeveralFilesUsesOneHandle) {
    writeFile("served/a.bin", "a");
    writeFile("served/b.bin", "b");
    EXPECT_TRUE(fetch("a.bin", "a.bin"));
    EXPECT_TRUE(fetch("b.bin", "b.bin"));
    EXPECT_EQ(readFile("b.bin"), "b");
}

TEST_F(Download, withoutAHandleFailsWithoutAWord) {
    EXPECT_FALSE(lf_downloadTo(nullptr, gf_downloadUrl("a"), "a", DownloadMode::binary));
    EXPECT_THAT(log.lines(), IsEmpty());
    EXPECT_THAT(server.requests(), IsEmpty());
}

TEST_F(Download, intoAFolderThatIsNotThereFailsBeforeTheServerIsAsked) {
    EXPECT_FALSE(fetch("a.bin", "absent/a.bin"));
    EXPECT_THAT(log.lines(), ElementsAre("Could not open output file: absent/a.bin"));
    EXPECT_THAT(server.requests(), IsEmpty());
}

TEST_F(Download, withNobodyListeningFails) {
    const std::string root = [] {
        const DownloadServer gone("served");
        return gone.root();
    }();
    writeFile("a.bin", "former");
    EXPECT_FALSE(lf_downloadTo(handle.get(), root + "a.bin", "a.bin", DownloadMode::binary));
    EXPECT_THAT(log.lines(),
                ElementsAre(fmt::format("Download error: 'Couldn't connect to server' for {}a.bin", root)));
    EXPECT_EQ(readFile("a.bin"), "former");
}

TEST_F(Download, speaksOnlyHttpAndHttps) {
    writeFile("source.bin", "local");
    const std::string url = "file://" + fs::absolute("source.bin").generic_string();
    EXPECT_FALSE(lf_downloadTo(handle.get(), url, "a.bin", DownloadMode::binary));
    EXPECT_FALSE(fs::exists("a.bin"));
    EXPECT_THAT(log.lines(), ElementsAre(fmt::format("Download error: 'Unsupported protocol' for {}", url)));
}

TEST_F(Download, ofATargetThatCannotBeReplacedLeavesNoSideFile) {
    writeFile("served/a.bin", "x");
    writeFile("target/a.bin/inside", "a folder cannot be replaced by a file");
    EXPECT_FALSE(fetch("a.bin", "target/a.bin"));
    EXPECT_THAT(log.lines(), ElementsAre(StartsWith("could not rename target/a.bin.part => target/a.bin: ")));
    EXPECT_THAT(filesOf("target"), ElementsAre("a.bin"));
}

TEST_P(DownloadFault, leavesTheFormerFileAndNoSideFile) {
    writeFile("served/a.bin", std::string(100000, 'n'));
    writeFile("target/a.bin", "former");
    server.setFault(GetParam().fault);
    EXPECT_FALSE(fetch("a.bin", "target/a.bin"));
    EXPECT_EQ(readFile("target/a.bin"), "former");
    EXPECT_THAT(filesOf("target"), ElementsAre("a.bin"));
    EXPECT_THAT(log.lines(),
                ElementsAre(fmt::format("Download error: '{}' for {}a.bin", GetParam().text, server.root())));
}

INSTANTIATE_TEST_SUITE_P(ofTheServer, DownloadFault,
                         testing::Values(Fault{ServerFault::notFound, "HTTP response code said error"},
                                         Fault{ServerFault::serverError, "HTTP response code said error"},
                                         Fault{ServerFault::redirect, "HTTP response code said error"},
                                         Fault{ServerFault::halfBody, "Transferred a partial file"},
                                         Fault{ServerFault::doubleLength, "Transferred a partial file"}));

TEST_F(Download, fromASlowServerArrivesWhole) {
    const std::string bytes = someBytes + std::string(100000, 'n') + "end";
    writeFile("served/a.bin", bytes);
    server.setFault(ServerFault::slow);
    EXPECT_TRUE(fetch("a.bin", "a.bin"));
    EXPECT_EQ(server.slowPieces(), 20U);
    EXPECT_EQ(readFile("a.bin"), bytes);
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(Download, isAbortedByAStopFlag) {
    writeFile("served/a.bin", std::string(100000, 'n'));
    writeFile("a.bin", "former");
    server.setFault(ServerFault::stall);
    std::thread stopper([this] {
        eventually([this] { return !server.requests().empty(); });
        gf_stopRun(ExitReason::userClosed, 0);
    });
    EXPECT_FALSE(fetch("a.bin", "a.bin"));
    stopper.join();
    EXPECT_EQ(readFile("a.bin"), "former");
    EXPECT_THAT(log.lines(), ElementsAre(HasSubstr("Operation was aborted by an application callback")));
}

TEST_F(Download, ofADataFileComesFromTheFolderOfTheMajorVersion) {
    writeSealed("served/downloads/11/dbase.enc", "data");
    fs::create_directory("input");
    EXPECT_TRUE(lf_downloadDataFile("dbase.enc", "input/dbase.enc"));
    EXPECT_EQ(readFile("input/dbase.enc"), readFile("served/downloads/11/dbase.enc"));
    EXPECT_THAT(server.requests(), ElementsAre("/downloads/11/dbase.enc"));
    EXPECT_THAT(log.lines(), ElementsAre("Downloaded 'dbase.enc' to 'input/dbase.enc'"));
    EXPECT_THAT(filesOf("input"), ElementsAre("dbase.enc"));
}

TEST_F(Download, ofADataFileThatFailsSaysSo) {
    writeFile("input/dbase.enc", "former");
    EXPECT_FALSE(lf_downloadDataFile("dbase.enc", "input/dbase.enc"));
    EXPECT_EQ(readFile("input/dbase.enc"), "former");
    EXPECT_THAT(log.lines(), Contains("Downloading 'dbase.enc' failed !"));
}

TEST_F(Download, ofADataFileUnderAWrongLengthOrKeyOrAnotherPageKeepsTheFormerOne) {
    writeSealed("served/downloads/11/dbase.enc", std::string(10000, 'x'));
    writeFile("input/dbase.enc", "former");
    server.setFault(ServerFault::halfLength);
    EXPECT_FALSE(lf_downloadDataFile("dbase.enc", "input/dbase.enc"));
    server.setFault(ServerFault::otherPage);
    EXPECT_FALSE(lf_downloadDataFile("dbase.enc", "input/dbase.enc"));
    server.setFault(ServerFault::none);
    writeSealed("served/downloads/11/dbase.enc", "x", *parseDataKey("this is some other key, 32 bytes"));
    EXPECT_FALSE(lf_downloadDataFile("dbase.enc", "input/dbase.enc"));
    EXPECT_EQ(readFile("input/dbase.enc"), "former");
    EXPECT_THAT(filesOf("input"), ElementsAre("dbase.enc"));
    EXPECT_THAT(
        log.lines(),
        ElementsAre("'dbase.enc' is incomplete, or sealed for another program", "Downloading 'dbase.enc' failed !",
                    "'dbase.enc' is incomplete, or sealed for another program", "Downloading 'dbase.enc' failed !",
                    "'dbase.enc' is incomplete, or sealed for another program", "Downloading 'dbase.enc' failed !"));
}

TEST_F(Download, ofADataFileThatIsEmptyOrTruncatedOrDamagedOnTheServerKeepsTheFormerOne) {
    writeSealed("served/downloads/11/dbase.enc", std::string(10000, 'x'));
    const std::string sound = readFile("served/downloads/11/dbase.enc");
    std::string flipped = sound;
    flipped[sound.size() / 2] = static_cast<char>(flipped[sound.size() / 2] ^ 1);
    writeFile("input/dbase.enc", "former");
    for (const std::string& bytes : {std::string(), sound.substr(0, sound.size() - 1), flipped}) {
        writeFile("served/downloads/11/dbase.enc", bytes);
        EXPECT_FALSE(lf_downloadDataFile("dbase.enc", "input/dbase.enc"));
        EXPECT_EQ(readFile("input/dbase.enc"), "former");
        EXPECT_THAT(filesOf("input"), ElementsAre("dbase.enc"));
    }
}

TEST(DownloadRoot, ofThisBuildIsOnThisMachine) {
    EXPECT_THAT(gf_downloadUrl("downloads/x"), StartsWith("http://127.0.0.1:"));
    EXPECT_THAT(gf_downloadUrl("downloads/x"), EndsWith("/downloads/x"));
}
