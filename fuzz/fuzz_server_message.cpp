// fuzz/fuzz_server_message.cpp
// Any bytes on the stand-in client's link: no fault, and in whatever pieces they come they are the same messages.
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "rig/traffic/server_messages.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    rig::ServerMessages whole;
    rig::ServerMessages halves;
    const std::size_t messages = whole.take(bytes).size();
    const std::size_t first = halves.take(bytes.substr(0, size / 2)).size();
    const std::size_t second = halves.take(bytes.substr(size / 2)).size();
    constexpr std::size_t shortMessages = 512; // longer ones are cut where a piece ends
    if (size <= shortMessages && messages != first + second) {
        std::abort();
    }
    return 0;
}
