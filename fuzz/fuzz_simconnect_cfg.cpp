// fuzz/fuzz_simconnect_cfg.cpp
// SimConnect.cfg: whatever the file holds, its settings keep within their limits.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "core/text_files.h"
#include "platform/text_encoding.h"
#include "sim/transport/configuration.h"

namespace {

bool isTextOf1024Characters(const std::string& text) {
    const auto characters = std::count_if(text.begin(), text.end(),
                                          [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0) != 0x80; });
    return characters <= 1024 && platform::isValidUtf8(text);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    const std::vector<std::string> lines = linesOf(charsetOf(bytes), bytes);
    for (const std::uint32_t index : {0u, 1u}) {
        const ConnectionSettings settings = settingsFrom(lines, index);
        const bool good = isTextOf1024Characters(settings.address) && isTextOf1024Characters(settings.port) &&
                          settings.maxRecordBytes >= 65536 && !hostName(settings).empty() &&
                          pipeName(settings).starts_with("\\\\");
        if (!good || portNumber(settings) == 0) {
            std::abort();
        }
    }
    return 0;
}
