// An airport file of the older layout, as the server may send it: whatever it holds, the nearest stand is one within
// reach or none, and a file without a whole document has none.
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include <pugixml.hpp>

#include "fuzz/memory_folder.h"
#include "parking/closest_stand.h"

namespace {

void require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const MemoryFolder folder("fuzz_closest_stand");
    const auto path = folder.file("airport.xml");
    writeInput(path, data, size);
    const ClosestStand closest = lf_closestStandInFile(path, {52.3, 4.76});
    require(closest.distanceNm >= 0 && closest.distanceNm <= noStandNm);
    pugi::xml_document document;
    const bool isWhole = document.load_file(path.c_str());
    require(closest.distanceNm == noStandNm || (isWhole && document.child("parkpositions")));
    return 0;
}
