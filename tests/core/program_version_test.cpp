#include "core/program_version.h"

#include <gtest/gtest.h>

#include <random>
#include <stdexcept>
#include <string>
#include <tuple>

#include <fmt/format.h>

namespace {

std::string failureOf(const std::string& text) {
    try {
        parseVersion(text);
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return "no failure";
}

TEST(ProgramVersion, thisProgramIs11_10_8) {
    EXPECT_EQ(versionText(thisVersion), "11.10.8");
}

TEST(ProgramVersion, aVersionIsReadFromItsText) {
    EXPECT_EQ(parseVersion("11.0.2"), (ProgramVersion{11, 0, 2}));
    EXPECT_EQ(parseVersion("0.0.0"), (ProgramVersion{0, 0, 0}));
    EXPECT_EQ(parseVersion("007.08.0009"), (ProgramVersion{7, 8, 9}));
    EXPECT_EQ(parseVersion("2147483647.0.1"), (ProgramVersion{2147483647, 0, 1}));
}

TEST(ProgramVersion, theFirstVersionInATextCounts) {
    EXPECT_EQ(parseVersion("version 1.2.3 of 4.5.6"), (ProgramVersion{1, 2, 3}));
    EXPECT_EQ(parseVersion("1.2.3.4"), (ProgramVersion{1, 2, 3}));
    EXPECT_EQ(parseVersion("1.2.x3.4.5"), (ProgramVersion{3, 4, 5}));
    EXPECT_EQ(parseVersion("9.1..1.2.3"), (ProgramVersion{1, 2, 3}));
    EXPECT_EQ(parseVersion("-1.2.3"), (ProgramVersion{1, 2, 3}));
}

TEST(ProgramVersion, aTextWithoutAVersionIsAnInvalidFormat) {
    for (const char* text : {"", "abc", "11", "11.0", "11.0.", ".1.2", "1,2,3", "1 .2.3", "1..2.3"}) {
        EXPECT_EQ(failureOf(text), "invalid version format") << text;
    }
    EXPECT_EQ(failureOf(std::string(200'000, '1')), "invalid version format");
}

TEST(ProgramVersion, aNumberThatIsTooLargeIsAParseError) {
    for (const char* text : {"2147483648.0.0", "0.99999999999.0", "0.0.123456789012345678901234567890"}) {
        EXPECT_EQ(failureOf(text), "parse error in version string") << text;
    }
}

TEST(ProgramVersion, versionsAreComparedFromTheLeft) {
    std::mt19937 random(11);
    std::uniform_int_distribution<int> part(0, 3);
    for (int i = 0; i < 1000; ++i) {
        const ProgramVersion a{part(random), part(random), part(random)};
        const ProgramVersion b{part(random), part(random), part(random)};
        const auto parts = [](const ProgramVersion& v) { return std::tuple(v.major, v.minor, v.patch); };
        EXPECT_EQ(a < b, parts(a) < parts(b)) << versionText(a) << " " << versionText(b);
        EXPECT_EQ(a == b, parts(a) == parts(b)) << versionText(a) << " " << versionText(b);
    }
}

TEST(ProgramVersion, everyVersionSurvivesItsText) {
    std::mt19937 random(12);
    std::uniform_int_distribution<int> part(0, 2147483647);
    for (int i = 0; i < 1000; ++i) {
        const ProgramVersion version{part(random), part(random), part(random)};
        EXPECT_EQ(parseVersion(fmt::format("v{}-beta", versionText(version))), version);
    }
}

} // namespace
