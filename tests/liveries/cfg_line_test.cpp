// tests/liveries/cfg_line_test.cpp
#include "liveries/cfg_line.h"

#if defined(__GNUC__) && !defined(__clang__)
// The library's own expressions are taken for uninitialized where the sanitizers are on.
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif

#include <array>
#include <random>
#include <regex>
#include <string>

#include <gmock/gmock.h>

using testing::Optional;

namespace {

struct KeyExpression {
    CfgKey key;
    const char* name;
    std::regex expression;
};

const std::array<KeyExpression, 8>& keyExpressions() {
    static const std::array<KeyExpression, 8> all{{
        {CfgKey::title, "title", std::regex(R"(\s*(title)\s*=\s*(.*\S)\s*)")},
        {CfgKey::sim, "sim", std::regex(R"(\s*(sim)\s*=\s*(.*\S)\s*)")},
        {CfgKey::model, "model", std::regex(R"(\s*(model)\s*=\s*(.*\S)\s*)")},
        {CfgKey::texture, "texture", std::regex(R"(\s*(texture)\s*=\s*(.*\S)\s*)")},
        {CfgKey::atc_model, "atc_model", std::regex(R"(\s*(atc_model)\s*=\s*(.*\S)\s*)")},
        {CfgKey::atc_id, "atc_id", std::regex(R"(\s*(atc_id)\s*=\s*(.*\S)\s*)")},
        {CfgKey::atc_parking_types, "atc_parking_types", std::regex(R"(\s*(atc_parking_types)\s*=\s*(.*\S)\s*)")},
        {CfgKey::atc_parking_codes, "atc_parking_codes", std::regex(R"(\s*(atc_parking_codes)\s*=\s*(.*\S)\s*)")},
    }};
    return all;
}

std::optional<std::string> groupOf(const std::regex& expression, const std::string& text, std::size_t group) {
    std::smatch match;
    if (!std::regex_match(text, match, expression)) {
        return std::nullopt;
    }
    return match[group].str();
}

/// Pieces strung together at random; whatever they spell, the line is compared.
template <std::size_t count>
std::string randomText(std::mt19937& random, const std::array<std::string, count>& pieces, std::size_t atMost) {
    std::string text;
    for (std::size_t left = random() % (atMost + 1); left > 0; --left) {
        text += pieces[random() % count];
    }
    return text;
}

const std::array<std::string, 16> commonPieces{
    " ",    "\t",   "\v",   "\f",   "\r",   "\n",   "a", "Z",
    "\xE9", "\xA0", "\x85", "\x80", "\xFF", "\x01", "/", std::string(1, '\0')};

void expectSameEntry(const std::string& line) {
    const std::optional<CfgEntry> entry = cfgEntry(line);
    for (const KeyExpression& key : keyExpressions()) {
        const std::optional<std::string> expected = groupOf(key.expression, line, 2);
        const bool isThisKey = entry && entry->key == key.key;
        ASSERT_EQ(isThisKey, expected.has_value()) << key.name << " in " << testing::PrintToString(line);
        if (isThisKey) {
            ASSERT_EQ(entry->value, *expected) << testing::PrintToString(line);
        }
    }
}

constexpr std::size_t tenMegabytes = 10 * 1024 * 1024;

} // namespace

TEST(CfgEntry, isWhatTheExpressionsSayOfAnyLine) {
    std::mt19937 random(7);
    for (int i = 0; i < 40'000; ++i) {
        std::string line = randomText(random, commonPieces, 2);
        line += keyExpressions()[random() % keyExpressions().size()].name;
        line += randomText(random, commonPieces, 1) + (random() % 8 == 0 ? "" : "=");
        line += randomText(random, commonPieces, 6);
        if (random() % 8 == 0) {
            line[random() % line.size()] = "= []t_"[random() % 6];
        }
        ASSERT_NO_FATAL_FAILURE(expectSameEntry(line));
    }
}

TEST(CfgEntry, keysAreLowerCaseAndStandFirst) {
    EXPECT_FALSE(cfgEntry("Title=A"));
    EXPECT_FALSE(cfgEntry("//title=A"));
    EXPECT_FALSE(cfgEntry("titles=A"));
    EXPECT_FALSE(cfgEntry("title"));
    EXPECT_FALSE(cfgEntry("title=  "));
}

TEST(CfgEntry, theValueHasNoWhiteSpaceRoundIt) {
    const auto entry = cfgEntry(" \ttitle\t = \t An A320 = one \t ");
    ASSERT_TRUE(entry);
    EXPECT_EQ(entry->key, CfgKey::title);
    EXPECT_EQ(entry->value, "An A320 = one");
}

TEST(CfgEntry, aCarriageReturnInsideTheValueIsNoMatch) {
    EXPECT_FALSE(cfgEntry("title=a\rb"));
    EXPECT_EQ(cfgEntry("title=ab\r\r")->value, "ab");
}

TEST(CfgEntry, survivesALineOfTenMegabytes) {
    const std::string value(tenMegabytes, 'x');
    EXPECT_EQ(cfgEntry("title=" + value + "  ")->value, value);
    EXPECT_FALSE(cfgEntry("title=" + std::string(tenMegabytes, ' ')));
    EXPECT_FALSE(cfgEntry(std::string(tenMegabytes, '=')));
}

TEST(FltsimDigits, areWhatTheExpressionSaysOfAnyLine) {
    const std::array<std::string, 12> pieces{"[fltsim.", "[FLTSIM.", "1",  "02", "]",    "[",
                                             " ",        "\t",       "\r", "\v", "\xE9", "-"};
    const std::regex expression(R"(\s*(\[fltsim\.)(\d+)\]\s*)");
    std::mt19937 random(11);
    for (int i = 0; i < 60'000; ++i) {
        std::string line = randomText(random, pieces, 1) + (random() % 4 == 0 ? "" : "[fltsim.");
        line += randomText(random, pieces, 4) + (random() % 4 == 0 ? "" : "]") + randomText(random, pieces, 2);
        const auto digits = fltsimDigits(line);
        const auto expected = groupOf(expression, line, 2);
        ASSERT_EQ(digits.has_value(), expected.has_value()) << testing::PrintToString(line);
        if (digits) {
            ASSERT_EQ(*digits, *expected) << testing::PrintToString(line);
        }
    }
}

TEST(FltsimDigits, surviveALineOfTenMegabytes) {
    const std::string digits(tenMegabytes, '1');
    EXPECT_EQ(fltsimDigits("[fltsim." + digits + "]"), digits);
    EXPECT_FALSE(fltsimDigits("[fltsim." + digits));
}

TEST(MentionsFltsim, lowerOrUpperCaseAnywhereInTheLine) {
    EXPECT_TRUE(mentionsFltsim("x [fltsim.0] // first"));
    EXPECT_TRUE(mentionsFltsim("[FLTSIM.0]"));
    EXPECT_FALSE(mentionsFltsim("[Fltsim.0]"));
    EXPECT_FALSE(mentionsFltsim("[fltsim]"));
}

TEST(AirlineBehindType, isWhatTheExpressionSaysOfAnyTitle) {
    const std::array<std::string, 14> pieces{"B738", "KLM", "_", "k",    " ",    "\t",   "\r",
                                             "\n",   "9",   "-", "\xE9", "\xC3", "AFR ", "\f"};
    const std::regex expression(R"(B738\s*(\w\w\w).*$)");
    std::mt19937 random(13);
    for (int i = 0; i < 60'000; ++i) {
        const std::string title = (random() % 8 == 0 ? "" : "B738") + randomText(random, pieces, 6);
        const auto airline = airlineBehindType(title, "B738");
        const auto expected = groupOf(expression, title, 1);
        ASSERT_EQ(airline.has_value(), expected.has_value()) << testing::PrintToString(title);
        if (airline) {
            ASSERT_EQ(*airline, *expected) << testing::PrintToString(title);
        }
    }
}

TEST(IvaoFolderCode, isWhatTheExpressionSaysOfAnyPath) {
    const std::array<std::string, 12> pieces{"C:",           "\\",           "IVAO_MTL", "IVAO_",
                                             "B738",         "\\IVAO_MTL\\", "\\IVAO_",  "\\aircraft.cfg",
                                             "aircraft.cfg", "aircraftxcfg", "\r",       "-"};
    const std::regex expression(R"(.+\\IVAO_MTL\\IVAO_(\w+)\\aircraft.cfg$)");
    std::mt19937 random(17);
    int matches = 0;
    for (int i = 0; i < 60'000; ++i) {
        std::string path = randomText(random, pieces, 3);
        path += (random() % 4 == 0 ? "" : "\\IVAO_MTL\\IVAO_") + randomText(random, pieces, 3);
        path += random() % 4 == 0 ? "" : "\\aircraft.cfg";
        const auto code = ivaoFolderCode(path);
        const auto expected = groupOf(expression, path, 1);
        ASSERT_EQ(code.has_value(), expected.has_value()) << testing::PrintToString(path);
        if (code) {
            ASSERT_EQ(*code, *expected) << testing::PrintToString(path);
            ++matches;
        }
    }
    EXPECT_GT(matches, 1000);
}

TEST(IvaoFolderCode, isTheOneRightAboveTheFile) {
    EXPECT_THAT(ivaoFolderCode(R"(C:\p3d\IVAO_MTL\IVAO_B738w\aircraft.cfg)"), Optional(testing::StrEq("B738w")));
    EXPECT_FALSE(ivaoFolderCode(R"(C:\p3d\IVAO_MTL\IVAO_B738\sub\aircraft.cfg)"));
    EXPECT_FALSE(ivaoFolderCode(R"(C:\p3d\IVAO_MTL\IVAO_B738\Aircraft.cfg)"));
    EXPECT_FALSE(ivaoFolderCode(R"(\IVAO_MTL\IVAO_B738\aircraft.cfg)"));
    EXPECT_FALSE(ivaoFolderCode(R"(C:\ivao_x-csl\B738\aircraft.cfg)"));
}
