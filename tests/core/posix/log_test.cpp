// tests/core/posix/log_test.cpp
// The log on a disk that is full for a while.
#include "core/log.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "tests/support/log_capture.h"
#include "tests/support/posix/full_disk.h"

namespace {

TEST(LogFullDisk, errorLinesAreWrittenAgainWhenThereIsSpace) {
    const LogCapture log;
    logError("before");
    {
        const FullDisk disk(std::filesystem::file_size("Log.txt"));
        logError("without space");
    }
    logError("after");
    EXPECT_TRUE(log.contains("==> before"));
    EXPECT_TRUE(log.contains("==> after"));
}

TEST(LogFullDisk, ordinaryLinesAreWrittenAgainWhenThereIsSpace) {
    const LogCapture log;
    gf_flushLog();
    {
        const FullDisk disk(std::filesystem::file_size("Log.txt"));
        for (int i = 0; i < 2000; ++i) {
            ::log(std::string(99, 'x')); // more than the log holds back
        }
        gf_flushLog();
    }
    ::log("after");
    EXPECT_TRUE(log.contains("after"));
}

} // namespace
