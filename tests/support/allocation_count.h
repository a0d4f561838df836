// tests/support/allocation_count.h
// Counts what the program takes from the heap. A program that uses this has its own operator new.
#pragma once

#include <cstddef>

/// Calls of operator new by this thread so far.
std::size_t allocationsOfThisThread();
