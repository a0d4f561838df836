// tests/support/eventually.h
// Waiting for what another thread does.
#pragma once

#include <chrono>
#include <thread>

/// Looks until the condition holds, at most ten seconds of real time; whether it came to hold.
template <typename Condition>
bool eventually(Condition condition) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}
