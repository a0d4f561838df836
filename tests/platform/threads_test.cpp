// tests/platform/threads_test.cpp
#include "platform/threads.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>

TEST(NamesOfThreads, aNameOfAnyLengthIsTaken) {
    std::thread([] {
        EXPECT_NO_THROW(platform::nameThisThread(""));
        EXPECT_NO_THROW(platform::nameThisThread(std::string(1000, 'x')));
    }).join();
}
