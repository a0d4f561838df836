#include "sim/transport/configuration.h"

#include <gtest/gtest.h>

#include <utility>

#include "core/run_flags.h"
#include "platform/files.h"
#include "tests/support/log_capture.h"
#include "tests/support/temporary_folder.h"

namespace fs = std::filesystem;

namespace {

constexpr std::size_t builtInLimit = 65536;

ConnectionSettings to(Protocol protocol, std::string address = "", std::string port = "") {
    ConnectionSettings settings;
    settings.protocol = protocol;
    settings.address = std::move(address);
    settings.port = std::move(port);
    return settings;
}

class Configuration : public ::testing::Test {
protected:
    void SetUp() override { platform::setDocumentsFolders(folder_.path()); }
    void TearDown() override {
        platform::setDocumentsFolders({});
        gSimulatorVersion = 0;
    }

    static ConnectionSettings settings(std::vector<std::string> lines) {
        lines.insert(lines.begin(), "[SimConnect]");
        return settingsFrom(lines, 0);
    }

    TemporaryFolder folder_;
};

} // namespace

TEST_F(Configuration, theFileIsSearchedInPublicDocumentsThenDocumentsThenTheCurrentFolder) {
    writeFile("SimConnect.cfg", "[SimConnect]\nPort=current");
    EXPECT_EQ(readSettings(0).port, "current");
    writeFile("own/SimConnect.cfg", "[SimConnect]\nPort=own");
    EXPECT_EQ(readSettings(0).port, "own");
    writeFile("public/SimConnect.cfg", "[SimConnect]\nPort=public");
    EXPECT_EQ(readSettings(0).port, "public");
}

TEST_F(Configuration, onlyTheFirstFileIsRead) {
    writeFile("public/SimConnect.cfg", "[SimConnect]\nPort=public");
    writeFile("own/SimConnect.cfg", "[SimConnect]\nAddress=own");
    EXPECT_EQ(readSettings(0).port, "public");
    EXPECT_EQ(readSettings(0).address, "");
}

TEST_F(Configuration, aFolderOfThatNameIsNoFile) {
    fs::create_directories("public/SimConnect.cfg");
    writeFile("own/SimConnect.cfg", "[SimConnect]\nPort=own");
    EXPECT_EQ(readSettings(0).port, "own");
}

TEST_F(Configuration, withoutAFileItIsThePipeOnThisMachine) {
    const ConnectionSettings settings = readSettings(0);
    EXPECT_EQ(configurationFile(), fs::path());
    EXPECT_EQ(settings.protocol, Protocol::pipe);
    EXPECT_EQ(settings.address, "");
    EXPECT_EQ(settings.port, "");
    EXPECT_EQ(settings.maxRecordBytes, builtInLimit);
    EXPECT_FALSE(settings.disableNagle);
    EXPECT_EQ(pipeName(settings), "\\\\.\\pipe\\Lockheed Martin Prepar3D v5\\SimConnect");
}

TEST_F(Configuration, anEmptyFileIsAsGoodAsNoneAndSaysNothing) {
    LogCapture log; // its folder is the current one now
    writeFile("SimConnect.cfg", "");
    EXPECT_EQ(readSettings(0).protocol, Protocol::pipe);
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(Configuration, theFileMayBeUnicode) {
    writeFile("SimConnect.cfg",
              std::string_view("\xFF\xFE[\0S\0i\0m\0C\0o\0n\0n\0e\0c\0t\0]\0\n\0P\0o\0r\0t\0=\0\xE9\0", 40));
    EXPECT_EQ(readSettings(0).port, "\xC3\xA9");
}

TEST_F(Configuration, eachIndexHasItsSection) {
    const std::vector<std::string> lines{
        "[SimConnect]", "Port=zero", "[SimConnect.1]", "Port=one", "[SimConnect.4294967295]", "Port=last"};
    EXPECT_EQ(settingsFrom(lines, 0).port, "zero");
    EXPECT_EQ(settingsFrom(lines, 1).port, "one");
    EXPECT_EQ(settingsFrom(lines, 4294967295).port, "last");
    EXPECT_EQ(settingsFrom(lines, 2).port, "");
}

TEST_F(Configuration, protocolNamesAreKnownInWhateverCase) {
    const struct {
        const char* name;
        Protocol protocol;
    } table[] = {
        {"Auto", Protocol::pipe}, {"IPv4", Protocol::ipv4}, {"IPv6", Protocol::ipv6}, {"Pipe", Protocol::pipe},
        {"AUTO", Protocol::pipe}, {"ipv4", Protocol::ipv4}, {"IPV6", Protocol::ipv6}, {"pipe", Protocol::pipe},
        {"IPv5", Protocol::pipe}, {"", Protocol::pipe},
    };
    for (const auto& row : table) {
        EXPECT_EQ(settings({std::string("Protocol=") + row.name}).protocol, row.protocol) << row.name;
    }
}

TEST_F(Configuration, textHasUpTo1024Characters) {
    const std::string longest(1024, 'x');
    EXPECT_EQ(settings({"Address=" + longest}).address, longest);
    EXPECT_EQ(settings({"Address=" + longest + "y"}).address, longest);
    EXPECT_EQ(settings({"Port=" + longest + "y"}).port, longest);
}

TEST_F(Configuration, aTextIsCutBetweenCharacters) {
    std::string longest;
    for (int i = 0; i < 1024; ++i) {
        longest += "\xC3\xA9";
    }
    EXPECT_EQ(settings({"Port=" + longest + "\xC3\xA9"}).port, longest);
}

TEST_F(Configuration, maxReceiveSizeRaisesTheLimitAndASmallerOneIsIgnored) {
    const struct {
        const char* text;
        std::size_t limit;
    } table[] = {
        {"65537", 65537},         {"1000000", 1000000}, {"65536", builtInLimit},
        {"65535", builtInLimit},  {"0", builtInLimit},  {"-1", builtInLimit},
        {"many", builtInLimit},   {"", builtInLimit},   {"99999999999", 2147483647},
        {"70000 ; bytes", 70000},
    };
    for (const auto& row : table) {
        EXPECT_EQ(settings({std::string("MaxReceiveSize=") + row.text}).maxRecordBytes, row.limit) << row.text;
    }
}

TEST_F(Configuration, disableNagleIsAnyNumberButZero) {
    EXPECT_TRUE(settings({"DisableNagle=1"}).disableNagle);
    EXPECT_TRUE(settings({"DisableNagle=-2"}).disableNagle);
    EXPECT_TRUE(settings({"DisableNagle=1 ; comment"}).disableNagle);
    EXPECT_FALSE(settings({"DisableNagle=0"}).disableNagle);
    EXPECT_FALSE(settings({"DisableNagle=yes"}).disableNagle);
    EXPECT_FALSE(settings({}).disableNagle);
}

TEST_F(Configuration, pipeNamesAreMadeOfHostAndPort) {
    const struct {
        const char* address;
        const char* port;
        const char* name;
    } table[] = {
        {"", "", "\\\\.\\pipe\\Lockheed Martin Prepar3D v5\\SimConnect"},
        {"server", "", "\\\\server\\pipe\\Lockheed Martin Prepar3D v5\\SimConnect"},
        {"", "Own\\Name", "\\\\.\\pipe\\Own\\Name"},
        {"server", "Own", "\\\\server\\pipe\\Own"},
    };
    for (const auto& row : table) {
        EXPECT_EQ(pipeName(to(Protocol::pipe, row.address, row.port)), row.name);
    }
}

TEST_F(Configuration, theDefaultPipeIsThatOfTheWantedSimulator) {
    gSimulatorVersion = 6;
    EXPECT_EQ(pipeName(to(Protocol::pipe)), "\\\\.\\pipe\\Lockheed Martin Prepar3D v6\\SimConnect");
    gSimulatorVersion = 5;
    EXPECT_EQ(pipeName(to(Protocol::pipe)), "\\\\.\\pipe\\Lockheed Martin Prepar3D v5\\SimConnect");
}

TEST_F(Configuration, anEmptyAddressIsThisMachine) {
    EXPECT_EQ(hostName(to(Protocol::ipv4)), "127.0.0.1");
    EXPECT_EQ(hostName(to(Protocol::ipv6)), "::1");
    EXPECT_EQ(hostName(to(Protocol::ipv4, "server")), "server");
    EXPECT_EQ(hostName(to(Protocol::ipv6, "fe80::1")), "fe80::1");
}

TEST_F(Configuration, aPortIsANumberFrom1To65535) {
    EXPECT_EQ(portNumber(to(Protocol::ipv4, "", "500")), 500);
    EXPECT_EQ(portNumber(to(Protocol::ipv4, "", "1")), 1);
    EXPECT_EQ(portNumber(to(Protocol::ipv6, "", "65535")), 65535);
    EXPECT_EQ(portNumber(to(Protocol::ipv4, "", "+500")), 500);
    EXPECT_EQ(portNumber(to(Protocol::ipv4, "", "500 ; the simulator's")), 500);
    for (const char* text : {"0", "65536", "-1", "http", "99999999999"}) {
        EXPECT_EQ(portNumber(to(Protocol::ipv4, "", text)), std::nullopt) << text;
    }
}
