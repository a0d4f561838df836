// tests/platform/posix/registry_test.cpp
// The registry in memory.
#include "platform/registry.h"

#include <gmock/gmock.h>

#include "platform/posix/memory_registry.h"

using platform::RegistryHive;
using ::testing::StartsWith;

namespace {

class MemoryRegistry : public ::testing::Test {
protected:
    MemoryRegistry() { platform::clearRegistry(); }
    ~MemoryRegistry() override { platform::clearRegistry(); }
};

} // namespace

TEST_F(MemoryRegistry, aValueIsReadFromItsHiveAndKey) {
    platform::setRegistryString(RegistryHive::machine, "Software\\Maker\\Sim", "SetupPath", "C:\\Sim");

    EXPECT_TRUE(platform::registryKeyExists(RegistryHive::machine, "Software\\Maker\\Sim"));
    EXPECT_EQ(platform::readRegistryString(RegistryHive::machine, "Software\\Maker\\Sim", "SetupPath"), "C:\\Sim");
    EXPECT_FALSE(platform::registryKeyExists(RegistryHive::user, "Software\\Maker\\Sim"));
}

TEST_F(MemoryRegistry, anAbsentValueOfAKeyHasNoSize) {
    platform::setRegistryString(RegistryHive::user, "Software\\Maker", "Port", "500");
    try {
        platform::readRegistryString(RegistryHive::user, "Software\\Maker", "Path");
        FAIL() << "no exception";
    } catch (const winreg::RegException& error) {
        EXPECT_THAT(error.what(), StartsWith("Cannot get the size of the string value: RegGetValueW failed."));
    }
}

TEST_F(MemoryRegistry, aNumberIsReadAsTextWhereNumbersAreExpectedAsWell) {
    platform::setRegistryNumber(RegistryHive::user, "Software\\Maker", "Number", 0xFFFFFFFF);
    platform::setRegistryString(RegistryHive::user, "Software\\Maker", "Text", "500");
    EXPECT_EQ(platform::readRegistryStringOrNumber(RegistryHive::user, "Software\\Maker", "Number"), "4294967295");
    EXPECT_EQ(platform::readRegistryStringOrNumber(RegistryHive::user, "Software\\Maker", "Text"), "500");
    EXPECT_THROW(platform::readRegistryString(RegistryHive::user, "Software\\Maker", "Number"), winreg::RegException);
}

TEST_F(MemoryRegistry, isEmptyAfterClearing) {
    platform::setRegistryString(RegistryHive::user, "Software\\Maker", "Port", "500");
    platform::clearRegistry();
    EXPECT_FALSE(platform::registryKeyExists(RegistryHive::user, "Software\\Maker"));
}
