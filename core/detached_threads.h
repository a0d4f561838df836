// core/detached_threads.h
// Threads that nobody joins, counted so that the end of the process can wait for them. Usable from any thread.
#pragma once

#include <chrono>
#include <functional>
#include <string_view>

/// Starts a named thread that owns itself. Throws std::system_error when the system has no thread to give.
void gf_startDetached(std::string_view name, std::function<void()> body);

/// Waits until every one of them is out, at most `atMost`; whether all are.
bool gf_waitForDetachedThreads(std::chrono::milliseconds atMost);
