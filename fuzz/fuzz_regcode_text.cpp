// A text file of registrations: whatever it holds, each line is an entry or costs itself.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "core/text_parts.h"
#include "fuzz/memory_folder.h"
#include "liveries/regcode_files.h"

namespace {

constexpr std::size_t shortestRegcode = 3;
constexpr std::size_t longestRegcode = 12;

void require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

bool isRegcode(const std::string& reg) {
    const std::size_t length = utf8Length(reg);
    return length >= shortestRegcode && length <= longestRegcode && reg.find_first_of(",;") == std::string::npos;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const MemoryFolder memory("fuzz_regcode_text");
    const auto folder = memory.file("my_regcodes");
    std::filesystem::create_directories(folder);
    writeInput(folder / "fuzz.txt", data, size);
    std::vector<RegEntry> entries;
    lf_readRegcodeFiles(folder, entries);
    // A line has one byte at least, and its end.
    require(entries.size() <= size / 2 + 1);
    for (const RegEntry& entry : entries) {
        require(std::all_of(entry.regs.begin(), entry.regs.end(), isRegcode));
        require(entry.title.find(';') == std::string::npos);
        require(!entry.title.empty() || !entry.regs.empty());
        require(!entry.special || !entry.regs.empty());
    }
    return 0;
}
