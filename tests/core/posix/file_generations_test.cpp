#include "core/file_generations.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "tests/support/log_capture.h"

namespace {

TEST(FileGenerations, aPathThatTheSystemCannotLookUpIsAnError) {
    const LogCapture log;
    const std::string name = std::string(300, 'n') + ".txt"; // above the 255 bytes of a file name
    EXPECT_FALSE(gf_save1GenerationOf(name));
    EXPECT_THAT(log.errors(), testing::ElementsAre("==> exists(" + name + "): File name too long"));
}

} // namespace
