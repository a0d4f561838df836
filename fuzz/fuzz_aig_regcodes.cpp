// AIG-regcodes.xml: whatever it holds, it is read or refused, and what was read goes into the tables or does nothing.
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "fuzz/memory_folder.h"
#include "liveries/livery.h"
#include "liveries/livery_tables.h"
#include "liveries/registration_codes.h"

namespace {

void require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

void buildTables() {
    clearLiveryTables();
    constexpr std::array<LiveryView, 2> liveries{{
        {.airl = "KLM", .type = "A320", .title = "One", .atcid = {}},
        {.airl = "KLM", .type = "A320", .title = "Two", .atcid = {}},
    }};
    lf_buildAirlineTables(liveries);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const MemoryFolder folder("fuzz_aig_regcodes");
    const auto path = folder.file("AIG-regcodes.xml");
    writeInput(path, data, size);
    std::vector<RegEntry> entries;
    const bool whole = lf_readAigRegcodes(path, entries);
    require(std::filesystem::exists(path) || (!whole && entries.empty()));
    for (const RegEntry& entry : entries) {
        for (const std::string& reg : entry.regs) {
            require(!reg.empty() && reg.find(',') == std::string::npos);
        }
    }
    buildTables();
    std::vector<std::string> report;
    lf_mergeRegcodes(entries, report);
    require(!report.empty());
    for (const auto& [reg, title] : RegcodeTable) {
        require(title == "One" || title == "Two");
    }
    require(UniqueRegcodes.size() <= SpecialRegcodes.size() && SpecialRegcodes.size() <= RegcodeTable.size());
    lf_buildModelTables();
    return 0;
}
