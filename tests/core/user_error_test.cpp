// tests/core/user_error_test.cpp
#include "core/user_error.h"

#include <gtest/gtest.h>

TEST(UserError, carriesItsNumberAndTheTextForTheUserThroughAHandlerOfRuntimeErrors) {
    try {
        throw kvd::UserErrorException(48, "Exit first!");
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "Exit first!");
        const auto* userError = dynamic_cast<const kvd::UserErrorException*>(&error);
        ASSERT_NE(userError, nullptr);
        EXPECT_EQ(userError->code(), 48);
    }
}
