// tests/platform/text_encoding_test.cpp
#include "platform/text_encoding.h"

#include <gtest/gtest.h>

#include <random>
#include <stdexcept>

#include "tests/support/code_page.h"

using namespace std::string_literals;

namespace {

struct Pair {
    std::string utf8;
    std::u16string utf16;
};

/// The smallest and the largest character of each length, and the neighbours of the surrogates.
const Pair samePairs[] = {
    {"", u""},
    {"\0"s, u"\0"s},
    {"\x7F", u"\x7F"},
    {"\xC2\x80", u"\x80"},
    {"\xDF\xBF", u"\x7FF"},
    {"\xE0\xA0\x80", u"\x800"},
    {"\xED\x9F\xBF", u"\xD7FF"},
    {"\xEE\x80\x80", u"\xE000"},
    {"\xEF\xBF\xBF", u"\xFFFF"},
    {"\xF0\x90\x80\x80", u"\xD800\xDC00"},
    {"\xF4\x8F\xBF\xBF", u"\xDBFF\xDFFF"},
    {"caf\u00E9 \u20AC \U0001F6EB", u"caf\u00E9 \u20AC \U0001F6EB"},
};

const std::string invalidUtf8[] = {
    "\x80",                 // a following byte first
    "\xC3",                 // cut off
    "\xE2\x82",             //
    "\xF0\x9F\x9B",         //
    "\xC3z",                // a following byte missing
    "\xE2\x82z",            //
    "\xC0\xAF",             // longer than need be
    "\xC1\xBF",             //
    "\xE0\x9F\xBF",         //
    "\xF0\x8F\xBF\xBF",     //
    "\xED\xA0\x80",         // surrogates
    "\xED\xBF\xBF",         //
    "\xF4\x90\x80\x80",     // above the last character
    "\xF8\x88\x80\x80\x80", // five bytes
    "\xFE",
    "\xFF",
};

const std::u16string invalidUtf16[] = {
    u"\xD800"s,       // alone at the end
    u"\xD800z"s,      // without its second half
    u"\xD800\xD800"s, //
    u"\xDC00"s,       // second half first
    u"\xDFFF\xD800"s,
};

template <typename Call>
std::string failure(Call call) {
    try {
        call();
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return "no exception";
}

} // namespace

TEST(Utf8AndUtf16, areTurnedIntoEachOther) {
    for (const auto& [utf8, utf16] : samePairs) {
        EXPECT_EQ(platform::utf16FromUtf8(utf8), utf16);
        EXPECT_EQ(platform::utf8FromUtf16(utf16), utf8);
        EXPECT_TRUE(platform::isValidUtf8(utf8));
    }
}

TEST(Utf8AndUtf16, invalidUtf8IsRefused) {
    for (const std::string& bytes : invalidUtf8) {
        EXPECT_FALSE(platform::isValidUtf8(bytes)) << testing::PrintToString(bytes);
        EXPECT_FALSE(platform::isValidUtf8("good " + bytes)) << testing::PrintToString(bytes);
        EXPECT_EQ(failure([&] { platform::utf16FromUtf8(bytes); }), "utf8_to_wide: invalid UTF-8");
    }
}

TEST(Utf8AndUtf16, invalidUtf16IsRefused) {
    for (const std::u16string& units : invalidUtf16) {
        EXPECT_EQ(failure([&] { platform::utf8FromUtf16(units); }), "wide_to_utf8: invalid UTF-16");
    }
}

TEST(RepairedUtf8, leavesValidTextAsItIs) {
    for (const auto& [utf8, utf16] : samePairs) {
        EXPECT_EQ(platform::repairedUtf8(utf8), utf8);
        EXPECT_EQ(platform::repairedUtf8(utf16), utf8);
    }
}

TEST(RepairedUtf8, replacesOnlyWhatIsPartOfNoCharacter) {
    EXPECT_EQ(platform::repairedUtf8("a\xE9z\xC3\xA9"), "a\uFFFDz\u00E9");
    EXPECT_EQ(platform::repairedUtf8("\xE2\x82"), "\uFFFD\uFFFD");
    EXPECT_EQ(platform::repairedUtf8(u"a\xD800z\xD83D\xDEEB"s), "a\uFFFDz\U0001F6EB");
    EXPECT_EQ(platform::repairedUtf8(u"\xDFFF\xD800"s), "\uFFFD\uFFFD");
}

TEST(RepairedUtf8, isValidWhateverTheInput) {
    std::mt19937 random(7);
    for (int round = 0; round < 20'000; ++round) {
        std::string bytes;
        std::u16string units;
        for (unsigned length = random() % 12; length > 0; --length) {
            bytes += static_cast<char>(random());
            units += static_cast<char16_t>(random() % 3 == 0 ? 'x' : 0xD700 + random() % 0xA00);
        }
        EXPECT_TRUE(platform::isValidUtf8(platform::repairedUtf8(bytes))) << testing::PrintToString(bytes);
        EXPECT_TRUE(platform::isValidUtf8(platform::repairedUtf8(units))) << testing::PrintToString(units);
    }
}

TEST(CodePage, plainTextStaysAsItIs) {
    EXPECT_EQ(platform::utf8FromCodePage(""), "");
    EXPECT_EQ(platform::utf8FromCodePage("plain\r\n"), "plain\r\n");
}

TEST(CodePage, westernBytesBecomeUtf8) {
    if (!isCodePageWestern()) {
        GTEST_SKIP() << "this system has another code page";
    }
    EXPECT_EQ(platform::utf8FromCodePage("Z\xFCrich \x80 \x93quoted\x94 \xFF"),
              "Z\u00FCrich \u20AC \u201Cquoted\u201D \u00FF");
}

TEST(CodePage, anyBytesBecomeValidUtf8) {
    std::mt19937 random(7);
    for (int round = 0; round < 2'000; ++round) {
        std::string bytes(random() % 12, '\0');
        for (char& byte : bytes) {
            byte = static_cast<char>(random());
        }
        EXPECT_TRUE(platform::isValidUtf8(platform::utf8FromCodePage(bytes))) << testing::PrintToString(bytes);
        EXPECT_TRUE(platform::isValidUtf8(platform::readableText(bytes))) << testing::PrintToString(bytes);
    }
}

TEST(CodePage, everyByteHasAMeaning) {
    if (!isCodePageWestern()) {
        GTEST_SKIP() << "this system has another code page";
    }
    for (int byte = 0; byte < 256; ++byte) {
        const std::string text = platform::utf8FromCodePage(std::string(1, static_cast<char>(byte)));
        EXPECT_TRUE(platform::isValidUtf8(text)) << byte;
        EXPECT_EQ(platform::utf16FromUtf8(text).size(), 1u) << byte;
        EXPECT_EQ(text.find("\uFFFD"), std::string::npos) << byte;
    }
}

TEST(ReadableText, validUtf8StaysAsItIs) {
    for (const auto& [utf8, utf16] : samePairs) {
        EXPECT_EQ(platform::readableText(utf8), utf8);
    }
}

TEST(ReadableText, bytesOfTheCodePageBecomeUtf8) {
    if (!isCodePageWestern()) {
        GTEST_SKIP() << "this system has another code page";
    }
    EXPECT_EQ(platform::readableText("Acc\xE8s refus\xE9"), "Acc\u00E8s refus\u00E9");
    EXPECT_EQ(platform::readableText("\x80"), "\u20AC");
    EXPECT_EQ(platform::readableText("cut off \xC3"), "cut off \u00C3");
}

TEST(ReadableText, aUtf8PathInsideAMessageOfTheCodePageKeepsItsLetters) {
    if (!isCodePageWestern()) {
        GTEST_SKIP() << "this system has another code page";
    }
    EXPECT_EQ(platform::readableText("refus\xE9: [C:\\Z\u00FCrich \u20AC\\\u6771] \xE0 lire"),
              "refus\u00E9: [C:\\Z\u00FCrich \u20AC\\\u6771] \u00E0 lire");
}
