// tests/platform/posix/threads_test.cpp
#include "platform/threads.h"

#include <gtest/gtest.h>

#include <array>
#include <pthread.h>
#include <string>
#include <thread>

namespace {

std::string nameOfAThreadCalled(std::string_view name) {
    std::array<char, 16> shown{};
    std::thread([&] {
        platform::nameThisThread(name);
        pthread_getname_np(pthread_self(), shown.data(), shown.size());
    }).join();
    return shown.data();
}

} // namespace

TEST(NamesOfThreads, areShownByTheSystem) {
    EXPECT_EQ(nameOfAThreadCalled("Traffic Reader"), "Traffic Reader");
}

TEST(NamesOfThreads, areCutToWhatTheSystemTakes) {
    EXPECT_EQ(nameOfAThreadCalled("A name of many letters"), "A name of many ");
}
