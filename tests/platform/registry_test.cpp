// tests/platform/registry_test.cpp
#include "platform/registry.h"

#include <gmock/gmock.h>

using platform::RegistryHive;
using ::testing::StartsWith;

namespace {

constexpr const char* absentKey = "Software\\Tarnwing tests\\No such key";
constexpr const char* systemKey = "Software\\Microsoft\\Windows NT\\CurrentVersion";

template <typename Call>
std::string failure(Call call) {
    try {
        call();
    } catch (const winreg::RegException& error) {
        EXPECT_NE(error.code().value(), 0);
        return error.what();
    }
    return "no exception";
}

} // namespace

TEST(Registry, anAbsentKeyCannotBeOpened) {
    for (const RegistryHive hive : {RegistryHive::machine, RegistryHive::user}) {
        EXPECT_FALSE(platform::registryKeyExists(hive, absentKey));
        EXPECT_THAT(failure([&] { platform::readRegistryString(hive, absentKey, "value"); }),
                    StartsWith("RegOpenKeyExW failed."));
        EXPECT_THAT(failure([&] { platform::readRegistryStringOrNumber(hive, absentKey, "value"); }),
                    StartsWith("RegOpenKeyExW failed."));
    }
}

TEST(Registry, theSystemsOwnKeyIsReadWhereThereIsOne) {
    if (!platform::registryKeyExists(RegistryHive::machine, systemKey)) {
        GTEST_SKIP() << "the registry in memory starts empty";
    }
    EXPECT_FALSE(platform::readRegistryString(RegistryHive::machine, systemKey, "CurrentVersion").empty());
    EXPECT_FALSE(platform::readRegistryStringOrNumber(RegistryHive::machine, systemKey, "CurrentVersion").empty());
    // A number wherever the system has been installed.
    const std::string date = platform::readRegistryStringOrNumber(RegistryHive::machine, systemKey, "InstallDate");
    EXPECT_FALSE(date.empty());
    EXPECT_EQ(date.find_first_not_of("0123456789"), std::string::npos) << date;
    EXPECT_THAT(failure([] { platform::readRegistryString(RegistryHive::machine, systemKey, "No such value"); }),
                StartsWith("Cannot get the size of the string value: RegGetValueW failed."));
}
