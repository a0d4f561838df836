// fuzz/fuzz_aircraft_cfg.cpp
// One aircraft.cfg file in both forms: whatever it holds, its liveries keep their contract.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <set>
#include <string>

#include "core/text_parts.h"
#include "fuzz/memory_folder.h"
#include "liveries/aircraft_cfg.h"
#include "liveries/reference_tables.h"
#include "platform/text_encoding.h"

namespace {

constexpr std::size_t longestRegistration = 12;

void require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

bool isFilled() {
    gAllTypes = {"A320", "B744", "C172"};
    gCategoryTypes.heavy = {"B744"};
    gFixes = {{"A32", "A320"}};
    gIcaoAirlines = {"KLM", "DLH", "ZZZ"};
    DbaseTable.insert("PH-BXA", {"KLM", "A320", "DLH", false});
    DbaseTable.insert("N12AB", {{}, "C172", {}, false});
    return true;
}

/// The file lies beside a model, an air file and a texture.
ScannedFile madeFile(const std::filesystem::path& folder) {
    for (const char* name : {"model.M", "texture.T", "model", "texture"}) {
        std::filesystem::create_directories(folder / name);
    }
    writeInput(folder / "S.air", nullptr, 0);
    return scannedFile(folder / "aircraft.cfg");
}

void checkLiveries(const std::list<Livery>& liveries) {
    std::set<std::string> titles;
    for (const Livery& livery : liveries) {
        require(titles.insert(livery.title).second && platform::isValidUtf8(livery.title));
        require(livery.airl == "PVT" || gf_isIcaoAirline(livery.airl));
        require(gAllTypes.contains(livery.type) && livery.scan == 1);
        require(utf8Length(livery.atcid) <= longestRegistration);
        require(livery.airl != "ZZZ" || livery.atcid.empty());
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const bool filled = isFilled();
    static const MemoryFolder folder("fuzz_aircraft_cfg");
    static const ScannedFile ordinary = madeFile(folder.file("ordinary"));
    static const ScannedFile ivao = madeFile(folder.file("IVAO_MTL") / "IVAO_A320");
    require(filled);
    for (const ScannedFile* file : {&ordinary, &ivao}) {
        writeInput(file->path, data, size);
        ScanState scan;
        const auto liveries =
            file == &ordinary ? lf_searchLiveriesinFile(1, *file, scan) : lf_searchLiveriesinIVAOFile(1, *file, scan);
        checkLiveries(liveries);
        require(scan.liveriesFound == static_cast<int>(liveries.size()));
    }
    return 0;
}
