// tests/platform/posix/text_encoding_test.cpp
#include <gtest/gtest.h>

#include "tests/support/code_page.h"

// The tests of its letters are left out under another page: here they never are.
TEST(CodePage, isTheWesternOneOnThisSystem) {
    EXPECT_TRUE(isCodePageWestern());
}
