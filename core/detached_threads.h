// core/detached_threads.h
// Threads that nobody joins, counted so that the end of the process can wait for them. Usable from any thread.
#pragma once

#include <chrono>
#include <functional>
#include <string_view>

/// Starts a named thread that owns itself. Throws std::system_error when the system has no thread to give.
void gf_startDetached(std::string_view name, std::function<void()> body);

/// Waits until no more than `stillIn` of them are left (a thread of theirs that waits counts itself), at most `atMost`
/// of real time; whether that came to be.
bool gf_waitForDetachedThreads(std::chrono::milliseconds atMost, int stillIn = 0);
