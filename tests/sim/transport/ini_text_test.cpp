#include "sim/transport/ini_text.h"

#include <gtest/gtest.h>

namespace {

using Lines = std::vector<std::string>;

} // namespace

TEST(IniText, aValueIsFoundInItsSection) {
    const Lines lines{"Port=1", "[Other]", "Port=2", "[SimConnect]", "Protocol=IPv4", "Port=3", "[Last]", "Port=4"};
    EXPECT_EQ(iniValue(lines, "SimConnect", "Port"), "3");
    EXPECT_EQ(iniValue(lines, "Last", "Port"), "4");
}

TEST(IniText, whatIsNotThereIsEmpty) {
    const Lines lines{"[SimConnect]", "Protocol=IPv4", "Port"};
    EXPECT_EQ(iniValue(lines, "SimConnect", "Port"), "");
    EXPECT_EQ(iniValue(lines, "SimConnect.1", "Protocol"), "");
    EXPECT_EQ(iniValue({}, "SimConnect", "Protocol"), "");
}

TEST(IniText, sectionAndKeyNamesAreFoundInWhateverCase) {
    const Lines lines{"[SIMCONNECT]", "protocol=IPv4"};
    EXPECT_EQ(iniValue(lines, "SimConnect", "Protocol"), "IPv4");
}

TEST(IniText, aNameMustBeTheWholeName) {
    const Lines lines{"[SimConnect.1]", "Port=1", "[SimConnect]", "PortName=2", "Port=3"};
    EXPECT_EQ(iniValue(lines, "SimConnect", "Port"), "3");
}

TEST(IniText, blanksRoundNamesAndValuesDoNotCount) {
    const Lines lines{"  [ SimConnect ]  ", "\t Address \t=  my host \t", "Port=5\r"};
    EXPECT_EQ(iniValue(lines, "SimConnect", "Address"), "my host");
    EXPECT_EQ(iniValue(lines, "SimConnect", "Port"), "5");
}

TEST(IniText, aPairOfQuotationMarksRoundAValueIsTakenOff) {
    const Lines lines{"[S]", "double=\" a \"", "single=' b '", "one=\"", "half=\"c", "mixed=\"d'"};
    EXPECT_EQ(iniValue(lines, "S", "double"), " a ");
    EXPECT_EQ(iniValue(lines, "S", "single"), " b ");
    EXPECT_EQ(iniValue(lines, "S", "one"), "\"");
    EXPECT_EQ(iniValue(lines, "S", "half"), "\"c");
    EXPECT_EQ(iniValue(lines, "S", "mixed"), "\"d'");
}

TEST(IniText, aCommentLineHasNoValue) {
    const Lines lines{"[S]", "; Port=1", ";Port=2", "Port=3;not a comment"};
    EXPECT_EQ(iniValue(lines, "S", "Port"), "3;not a comment");
    EXPECT_EQ(iniValue(lines, "S", ";Port"), "");
}

TEST(IniText, theFirstOfTwoKeysCounts) {
    EXPECT_EQ(iniValue({"[S]", "Port=1", "Port=2"}, "S", "Port"), "1");
}

TEST(IniText, onlyTheFirstOfTwoSectionsIsLookedAt) {
    const Lines lines{"[S]", "Port=1", "[Other]", "Port=2", "[S]", "Port=3", "Address=host"};
    EXPECT_EQ(iniValue(lines, "S", "Port"), "1");
    EXPECT_EQ(iniValue(lines, "S", "Address"), "");
    EXPECT_EQ(iniValue({"[S]", "[S]", "Port=1"}, "S", "Port"), "");
}

TEST(IniText, aNumberIsTheSignAndTheDigitsThatAValueBeginsWith) {
    const struct {
        const char* text;
        int number;
    } table[] = {
        {"1", 1},
        {"0", 0},
        {"-2", -2},
        {"+500", 500},
        {"1 ; comment", 1},
        {"500;", 500},
        {"007", 7},
        {"12ab", 12},
        {"1.9", 1},
        {"0x10", 0},
        {"", 0},
        {"yes", 0},
        {"+", 0},
        {"-", 0},
        {"+-5", 0},
        {"-+5", 0},
        {"--5", 0},
        {" 5", 0},
        {"2147483647", 2147483647},
        {"2147483648", 2147483647},
        {"99999999999999999999", 2147483647},
        {"+2147483648", 2147483647},
        {"-2147483648", -2147483647 - 1},
        {"-2147483649", -2147483647 - 1},
        {"99999999999 bytes", 2147483647},
    };
    for (const auto& row : table) {
        EXPECT_EQ(leadingNumber(row.text), row.number) << row.text;
    }
}

TEST(IniText, aValueMayHoldEqualsSigns) {
    EXPECT_EQ(iniValue({"[S]", "Address=a=b"}, "S", "Address"), "a=b");
}

TEST(IniText, aSectionLineWithoutItsEndIsASectionAllTheSame) {
    EXPECT_EQ(iniValue({"[S", "Port=1"}, "S", "Port"), "1");
    EXPECT_EQ(iniValue({"[", "Port=1"}, "", "Port"), "1");
}

TEST(IniText, onlyAsciiLettersHaveACase) {
    EXPECT_TRUE(equalsWithoutCase("IPv4", "ipV4"));
    EXPECT_FALSE(equalsWithoutCase("IPv4", "IPv"));
    EXPECT_FALSE(equalsWithoutCase("[", "{"));
    EXPECT_FALSE(equalsWithoutCase("\xC4", "\xE4"));
}
