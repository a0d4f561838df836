// tests/feed/log_text_test.cpp
#include "feed/log_text.h"

#include <gtest/gtest.h>
#include <random>

#include "platform/text_encoding.h"

namespace {

TEST(LogText, ordinaryTextIsUnchanged) {
    EXPECT_EQ(asLogText(""), "");
    EXPECT_EQ(asLogText("KLM1627,\"x\" {} \\ ~"), "KLM1627,\"x\" {} \\ ~");
    EXPECT_EQ(asLogText("Z\xC3\xBCrich"), "Z\xC3\xBCrich");
}

TEST(LogText, controlCharactersBecomeQuestionMarks) {
    EXPECT_EQ(asLogText("a\nb\rc\td\x7F"), "a?b?c?d?");
    EXPECT_EQ(asLogText(std::string_view("a\0b", 3)), "a?b");
}

TEST(LogText, bytesThatAreNoUtf8BecomeQuestionMarks) {
    EXPECT_EQ(asLogText("a\xFF\xC3z"), "a??z");
    EXPECT_EQ(asLogText("a\xC0\x80z"), "a??z");
}

TEST(LogText, theResultIsAlwaysOneLineOfUtf8) {
    std::mt19937 random(2);
    for (int round = 0; round < 2000; ++round) {
        std::string bytes(random() % 20, '\0');
        for (char& byte : bytes) {
            byte = static_cast<char>(random());
        }
        const std::string text = asLogText(bytes);
        EXPECT_TRUE(platform::isValidUtf8(text));
        EXPECT_EQ(text.find('\n'), std::string::npos);
        EXPECT_EQ(text.size(), bytes.size());
    }
}

} // namespace
