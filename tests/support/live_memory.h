// tests/support/live_memory.h
// What the program has taken from the heap and not given back. A program that uses this has its own operator new.
// Usable from any thread.
#pragma once

#include <cstddef>

struct LiveMemory {
    std::size_t blocks = 0;
    std::size_t bytes = 0; ///< as they were asked for

    friend bool operator==(const LiveMemory&, const LiveMemory&) = default;
};

LiveMemory liveMemory();
