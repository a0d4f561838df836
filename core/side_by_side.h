// core/side_by_side.h
// Two pieces of work at the same time, for what a start does and somebody waits for.
// Usable from any thread.
#pragma once

#include <future>
#include <string_view>
#include <thread>

#include "platform/threads.h"

/// Runs `mine` here and `beside` on a thread of this name, and returns when both are over. Throws what `mine` throws,
/// or else what `beside` throws. Where the system has no thread to give, `beside` runs here behind `mine`.
template <typename Mine, typename Beside>
void runSideBySide(Mine mine, std::string_view name, Beside beside) {
    // Its end waits for the thread, whatever `mine` throws.
    std::future<void> other = std::async([name, &beside, caller = std::this_thread::get_id()] {
        if (std::this_thread::get_id() != caller) {
            platform::nameThisThread(name);
        }
        beside();
    });
    mine();
    other.get();
}
