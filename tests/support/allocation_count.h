// tests/support/allocation_count.h
// Counts what the program takes from the heap, and lets it fail. A program that uses this has its own operator new.
#pragma once

#include <cstddef>

/// Calls of operator new by this thread so far.
std::size_t allocationsOfThisThread();

/// The next allocation by this thread that is at least so large throws std::bad_alloc, once.
void failNextAllocationOfThisThread(std::size_t leastBytes);
