// tests/support/live_memory.cpp
#include "tests/support/live_memory.h"

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <new>

namespace {

std::atomic<std::size_t> blocks{0};
std::atomic<std::size_t> bytes{0};

/// Before each block stands its size; as long as the strictest alignment of plain new.
constexpr std::size_t headBytes = __STDCPP_DEFAULT_NEW_ALIGNMENT__;
static_assert(headBytes >= sizeof(std::size_t));

} // namespace

LiveMemory liveMemory() {
    return {blocks, bytes};
}

// All plain forms: where a sanitizer has forms of its own, the library's do not call these.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    auto* const memory = static_cast<char*>(std::malloc(size + headBytes));
    if (memory == nullptr) {
        return nullptr;
    }
    std::memcpy(memory, &size, sizeof size);
    ++blocks;
    bytes += size;
    return memory + headBytes;
}

void* operator new(std::size_t size) {
    if (void* const memory = operator new(size, std::nothrow)) {
        return memory;
    }
    throw std::bad_alloc();
}

void* operator new[](std::size_t size) {
    return operator new(size);
}

void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return operator new(size, std::nothrow);
}

void operator delete(void* memory) noexcept {
    if (memory == nullptr) {
        return;
    }
    char* const head = static_cast<char*>(memory) - headBytes;
    std::size_t size = 0;
    std::memcpy(&size, head, sizeof size);
    --blocks;
    bytes -= size;
    std::free(head);
}

void operator delete(void* memory, std::size_t) noexcept {
    operator delete(memory);
}

void operator delete(void* memory, const std::nothrow_t&) noexcept {
    operator delete(memory);
}

void operator delete[](void* memory) noexcept {
    operator delete(memory);
}

void operator delete[](void* memory, std::size_t) noexcept {
    operator delete(memory);
}

void operator delete[](void* memory, const std::nothrow_t&) noexcept {
    operator delete(memory);
}
