// tests/core/number_text_test.cpp
#include "core/number_text.h"

#include <gmock/gmock.h>

#include <bit>
#include <climits>
#include <cmath>
#include <cstdint>
#include <limits>
#include <locale>
#include <random>

#include <fmt/format.h>

namespace {

class CommaAsDecimalPoint : public std::numpunct<char> {
protected:
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

class ForeignLocale {
public:
    ForeignLocale() : former_(std::locale::global(std::locale(std::locale::classic(), new CommaAsDecimalPoint))) {}
    ~ForeignLocale() { std::locale::global(former_); }
    ForeignLocale(const ForeignLocale&) = delete;
    ForeignLocale& operator=(const ForeignLocale&) = delete;

private:
    std::locale former_;
};

} // namespace

TEST(NumberText, aDecimalTextIsItsNumber) {
    EXPECT_EQ(parseDouble("0"), 0.0);
    EXPECT_EQ(parseDouble("-12.5"), -12.5);
    EXPECT_EQ(parseDouble("52.30861"), 52.30861);
    EXPECT_EQ(parseDouble("007"), 7.0);
    EXPECT_EQ(parseDouble(".5"), 0.5);
    EXPECT_EQ(parseDouble("5."), 5.0);
    EXPECT_EQ(parseDouble("1e3"), 1000.0);
    EXPECT_EQ(parseDouble("-2.5E-1"), -0.25);
    EXPECT_EQ(parseDouble("1.7976931348623157e308"), std::numeric_limits<double>::max());
}

TEST(NumberText, whatIsNotWhollyADecimalNumberIsNone) {
    for (const char* text : {"", " ", " 1", "1 ", "+1", "1,5", "1.2.3", "1e", "e5", "--1", ".", "-", "12ft", "null"}) {
        EXPECT_EQ(parseDouble(text), std::nullopt) << '"' << text << '"';
    }
    EXPECT_EQ(parseDouble(std::string_view("1\0", 2)), std::nullopt);
}

TEST(NumberText, notANumberAndInfinityAreNone) {
    for (const char* text : {"nan", "NaN", "-nan", "nan(1)", "inf", "-inf", "Infinity", "-INFINITY"}) {
        EXPECT_EQ(parseDouble(text), std::nullopt) << text;
    }
}

TEST(NumberText, whatADoubleCannotHoldIsNone) {
    for (const char* text : {"1e999", "-1e999", "1e-999", "1e309"}) {
        EXPECT_EQ(parseDouble(text), std::nullopt) << text;
    }
}

TEST(NumberText, hexadecimalIsNone) {
    for (const char* text : {"0x10", "0X1p3", "1p3", "ff", "-0x1"}) {
        EXPECT_EQ(parseDouble(text), std::nullopt) << text;
        EXPECT_EQ(parseInt(text), std::nullopt) << text;
    }
}

TEST(NumberText, everyFiniteDoubleComesBackFromItsShortestText) {
    std::mt19937_64 random(4711);
    for (int i = 0; i < 20'000; ++i) {
        const auto number = std::bit_cast<double>(random());
        if (std::isfinite(number)) {
            EXPECT_EQ(parseDouble(fmt::format("{}", number)), number);
        }
    }
}

TEST(NumberText, aWholeTextIsItsInt) {
    EXPECT_EQ(parseInt("0"), 0);
    EXPECT_EQ(parseInt("-17"), -17);
    EXPECT_EQ(parseInt("0010747"), 10747);
    EXPECT_EQ(parseInt("2147483647"), INT_MAX);
    EXPECT_EQ(parseInt("-2147483648"), INT_MIN);
}

TEST(NumberText, whatIsNotWhollyAnIntIsNone) {
    for (const char* text :
         {"", " 1", "1 ", "+1", "1.0", "1e3", "-", "12a", "2147483648", "-2147483649", "99999999999"}) {
        EXPECT_EQ(parseInt(text), std::nullopt) << '"' << text << '"';
    }
}

TEST(NumberText, aWholeNumberIsFormattedWithoutDecimalsAnyOtherWithOne) {
    EXPECT_EQ(formatNumber(0), "0");
    EXPECT_EQ(formatNumber(12), "12");
    EXPECT_EQ(formatNumber(-3), "-3");
    EXPECT_EQ(formatNumber(1e15), "1000000000000000");
    EXPECT_EQ(formatNumber(12.5), "12.5");
    EXPECT_EQ(formatNumber(-0.25), "-0.2");
    EXPECT_EQ(formatNumber(2.96), "3.0");
    EXPECT_EQ(formatNumber(0.04), "0.0");
}

TEST(NumberText, theUsersLocaleChangesNothing) {
    const ForeignLocale locale;
    EXPECT_EQ(parseDouble("1234.5"), 1234.5);
    EXPECT_EQ(parseDouble("1234,5"), std::nullopt);
    EXPECT_EQ(formatNumber(1234.5), "1234.5");
    EXPECT_EQ(formatNumber(1234567), "1234567");
}
