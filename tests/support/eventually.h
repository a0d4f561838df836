// tests/support/eventually.h
// Waiting for what another thread does.
#pragma once

#include <chrono>
#include <thread>

/// How long a test waits for what must come, on a machine as slow and busy as may be. Only a test that fails waits so
/// long.
inline constexpr std::chrono::seconds testPatience{60};

/// Looks until the condition holds, or until the patience is at its end; whether it came to hold.
template <typename Condition>
bool eventually(Condition condition) {
    const auto end = std::chrono::steady_clock::now() + testPatience;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}
