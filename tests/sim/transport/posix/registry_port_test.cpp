#include "sim/transport/configuration.h"

#include <gtest/gtest.h>

#include <utility>

#include "core/run_flags.h"
#include "platform/posix/memory_registry.h"

namespace {

constexpr const char* keyOfFive = "SOFTWARE\\Lockheed Martin\\Prepar3D v5";
constexpr const char* keyOfSix = "SOFTWARE\\Lockheed Martin\\Prepar3D v6";

ConnectionSettings to(Protocol protocol, std::string address = "", std::string port = "") {
    ConnectionSettings settings;
    settings.protocol = protocol;
    settings.address = std::move(address);
    settings.port = std::move(port);
    return settings;
}

class RegistryPort : public ::testing::Test {
protected:
    void TearDown() override {
        platform::clearRegistry();
        gSimulatorVersion = 0;
    }

    static void registered(const char* key, const char* value, const char* text) {
        platform::setRegistryString(platform::RegistryHive::user, key, value, text);
    }
};

} // namespace

TEST_F(RegistryPort, eachProtocolHasItsOwn) {
    registered(keyOfFive, "SimConnect_Port_IPv4", "504");
    registered(keyOfFive, "SimConnect_Port_IPv6", "506");
    EXPECT_EQ(portNumber(to(Protocol::ipv4)), 504);
    EXPECT_EQ(portNumber(to(Protocol::ipv6)), 506);
}

TEST_F(RegistryPort, itMayBeANumberInsteadOfAText) {
    platform::setRegistryNumber(platform::RegistryHive::user, keyOfFive, "SimConnect_Port_IPv4", 504);
    platform::setRegistryNumber(platform::RegistryHive::user, keyOfFive, "SimConnect_Port_IPv6", 0xFFFFFFFF);
    EXPECT_EQ(portNumber(to(Protocol::ipv4)), 504);
    EXPECT_EQ(portNumber(to(Protocol::ipv6)), std::nullopt);
}

TEST_F(RegistryPort, aPortOfTheSettingsCountsMore) {
    registered(keyOfFive, "SimConnect_Port_IPv4", "504");
    EXPECT_EQ(portNumber(to(Protocol::ipv4, "", "1000")), 1000);
}

TEST_F(RegistryPort, theKeyIsThatOfTheWantedSimulator) {
    registered(keyOfFive, "SimConnect_Port_IPv4", "504");
    registered(keyOfSix, "SimConnect_Port_IPv4", "604");
    gSimulatorVersion = 6;
    EXPECT_EQ(portNumber(to(Protocol::ipv4)), 604);
    gSimulatorVersion = 5;
    EXPECT_EQ(portNumber(to(Protocol::ipv4)), 504);
}

TEST_F(RegistryPort, theMachinesHiveIsNotAsked) {
    platform::setRegistryString(platform::RegistryHive::machine, keyOfFive, "SimConnect_Port_IPv4", "504");
    EXPECT_EQ(portNumber(to(Protocol::ipv4)), std::nullopt);
}

TEST_F(RegistryPort, withoutOneThereIsNoPort) {
    EXPECT_EQ(portNumber(to(Protocol::ipv4)), std::nullopt);
    registered(keyOfFive, "SimConnect_Port_IPv4", "none");
    EXPECT_EQ(portNumber(to(Protocol::ipv4)), std::nullopt);
    EXPECT_EQ(portNumber(to(Protocol::ipv6)), std::nullopt);
}
