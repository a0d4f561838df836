// tests/support/allocation_count.h
// Counts what the program takes from the heap, and lets it fail. A program that uses this has its own operator new.
#pragma once

#include <cstddef>

/// Calls of operator new by this thread so far.
std::size_t allocationsOfThisThread();

/// While it lives, the next allocation by this thread that is at least so large throws std::bad_alloc, once.
class FailingAllocation {
public:
    explicit FailingAllocation(std::size_t leastBytes);
    ~FailingAllocation();
    FailingAllocation(const FailingAllocation&) = delete;
    FailingAllocation& operator=(const FailingAllocation&) = delete;
};
