// tests/support/allocation_count.cpp
#include "tests/support/allocation_count.h"

#include <cstdlib>
#include <new>

namespace {

constexpr std::size_t never = static_cast<std::size_t>(-1);

[[maybe_unused]] thread_local std::size_t allocations = 0;
[[maybe_unused]] thread_local std::size_t leastFailingBytes = never;

} // namespace

std::size_t allocationsOfThisThread() {
    return allocations;
}

FailingAllocation::FailingAllocation(std::size_t leastBytes) {
    leastFailingBytes = leastBytes;
}

FailingAllocation::~FailingAllocation() {
    leastFailingBytes = never;
}

#ifndef TARNWING_SANITIZER_ALLOCATES
// The array, nothrow and sized forms of the library call these two.
void* operator new(std::size_t size) {
    ++allocations;
    if (size >= leastFailingBytes) {
        leastFailingBytes = never;
        throw std::bad_alloc();
    }
    if (void* memory = std::malloc(size == 0 ? 1 : size)) {
        return memory;
    }
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}
#endif
