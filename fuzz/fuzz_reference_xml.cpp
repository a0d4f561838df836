// fuzz/fuzz_reference_xml.cpp
// dbase.xml: whatever it holds, it is read or refused, and every look-up answers within its contract.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "core/user_error.h"
#include "fuzz/memory_folder.h"
#include "liveries/reference_data.h"
#include "liveries/reference_tables.h"

namespace {

constexpr int dataError = 61;

void require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

bool read(const std::filesystem::path& path) {
    try {
        return lf_readReferenceXml(path, [](std::string_view) {});
    } catch (const kvd::UserErrorException& error) {
        require(error.code() == dataError);
        return false;
    }
}

void checkTables() {
    require(!gAllTypes.empty() && !gAllTypes.contains(""));
    require(gHalfWingspans.size() <= gAllTypes.size());
    for (const auto& [type, halfSpanNm] : gHalfWingspans) {
        require(gAllTypes.contains(type) && halfSpanNm <= MaxHalfWingspan + 1e-12);
    }
    for (const auto& [wrong, right] : gFixes) {
        require(gAllTypes.contains(right));
    }
    for (const SimilarGroup& group : gSimilarGroups) {
        require(std::is_sorted(group.begin(), group.end()));
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const MemoryFolder folder("fuzz_reference_xml");
    const auto path = folder.file("dbase.xml");
    writeInput(path, data, size);
    if (read(path)) {
        checkTables();
    }
    const std::string text(reinterpret_cast<const char*>(data), std::min<std::size_t>(size, 100));
    gf_findPublisher(text);
    gf_publisherFromFileName(text, [](std::string_view) {});
    gf_wingspanOfType(text);
    if (const auto reg = gf_findRegcodeInText(text)) {
        require(reg->size() < 6 && text.find(*reg) != std::string::npos);
        require(DbaseTable.find(*reg).has_value());
    }
    for (const std::string& variant : gf_regcodeVariants(text)) {
        DbaseTable.find(variant);
    }
    return 0;
}
