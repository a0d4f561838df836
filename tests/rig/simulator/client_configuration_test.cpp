#include "rig/simulator/client_configuration.h"

#include <gtest/gtest.h>

#include "sim/transport/configuration.h"

using namespace rig;

namespace {

std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines(1);
    for (const char character : text) {
        if (character == '\n') {
            lines.emplace_back();
        } else {
            lines.back() += character;
        }
    }
    return lines;
}

} // namespace

TEST(ClientConfiguration, leadsAClientToEachWayInByItsIndex) {
    const std::vector<std::string> lines = linesOf(clientConfiguration({500, 501, "Own\\Pipe"}));
    const ConnectionSettings first = settingsFrom(lines, 0);
    EXPECT_EQ(first.protocol, Protocol::ipv4);
    EXPECT_EQ(hostName(first), "127.0.0.1");
    EXPECT_EQ(portNumber(first), 500);
    const ConnectionSettings second = settingsFrom(lines, 1);
    EXPECT_EQ(second.protocol, Protocol::ipv6);
    EXPECT_EQ(hostName(second), "::1");
    EXPECT_EQ(portNumber(second), 501);
    const ConnectionSettings third = settingsFrom(lines, 2);
    EXPECT_EQ(third.protocol, Protocol::pipe);
    EXPECT_EQ(pipeName(third), "\\\\.\\pipe\\Own\\Pipe");
}

TEST(ClientConfiguration, theFirstWayThatIsOpenIsIndex0) {
    EXPECT_EQ(clientConfiguration({std::nullopt, 501, std::nullopt}),
              "[SimConnect]\nProtocol=IPv6\nAddress=::1\nPort=501\n");
    EXPECT_EQ(clientConfiguration({std::nullopt, std::nullopt, "P"}), "[SimConnect]\nProtocol=Pipe\nPort=P\n");
    EXPECT_EQ(clientConfiguration({}), "");
}
