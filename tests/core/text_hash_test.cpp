// tests/core/text_hash_test.cpp
#include "core/text_hash.h"

#include <gtest/gtest.h>

namespace {

TEST(TextHash, isFnv1aOf64Bits) {
    EXPECT_EQ(TextHash{}(""), 0xcbf29ce484222325u);
    EXPECT_EQ(TextHash{}("a"), 0xaf63dc4c8601ec8cu);
    EXPECT_EQ(TextHash{}("foobar"), 0x85944171f73967e8u);
}

TEST(TextHash, countsBytesAboveAsciiAsUnsigned) {
    EXPECT_EQ(TextHash{}("\xFF"), (0xcbf29ce484222325u ^ 0xFFu) * 0x100000001b3u);
}

} // namespace
