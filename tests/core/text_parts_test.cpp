#include "core/text_parts.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::ElementsAre;

namespace {

TEST(TextParts, blanksTabsAndLineEndsAreTrimmedAtBothEnds) {
    EXPECT_EQ(trimmed(" \t\r\na b\t c\n\r\t "), "a b\t c");
    EXPECT_EQ(trimmed("a"), "a");
    EXPECT_EQ(trimmed(" \t\r\n"), "");
    EXPECT_EQ(trimmed(""), "");
}

TEST(TextParts, otherUnseenCharactersStay) {
    EXPECT_EQ(trimmed("\va\f"), "\va\f");
}

TEST(TextParts, eachSeparatorEndsAPart) {
    EXPECT_THAT(partsOf("a,b,c", ','), ElementsAre("a", "b", "c"));
    EXPECT_THAT(partsOf("a;b", ','), ElementsAre("a;b"));
    EXPECT_THAT(partsOf("a;b", ';'), ElementsAre("a", "b"));
}

TEST(TextParts, emptyPartsCount) {
    EXPECT_THAT(partsOf("", ','), ElementsAre(""));
    EXPECT_THAT(partsOf(",", ','), ElementsAre("", ""));
    EXPECT_THAT(partsOf(",a,,", ','), ElementsAre("", "a", "", ""));
}

TEST(TextParts, aCharacterOfSeveralBytesCountsOnce) {
    EXPECT_EQ(utf8Length(""), 0U);
    EXPECT_EQ(utf8Length("PH-ABC"), 6U);
    EXPECT_EQ(utf8Length("\xC3\x84-\xE2\x82\xAC-\xF0\x9F\x9B\xA9"), 5U);
}

} // namespace
