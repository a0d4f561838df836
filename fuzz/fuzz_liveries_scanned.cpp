// fuzz/fuzz_liveries_scanned.cpp
// LiveriesScanned.xml: it is refused with one of its errors and leaves nothing, or it is read, and reads the same again
// when written anew.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <optional>
#include <string>

#include "core/user_error.h"
#include "fuzz/memory_folder.h"
#include "liveries/livery.h"
#include "liveries/livery_file.h"

namespace {

void require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

std::optional<ScannedLiveries> read() {
    try {
        return lf_readLiveries();
    } catch (const kvd::UserErrorException& error) {
        require(error.code() == 51 || error.code() == 52 || error.code() == 999);
        return std::nullopt;
    }
}

Livery liveryOf(const LiveryView& view) {
    return {std::string(view.airl),
            std::string(view.type),
            std::string(view.title),
            std::string(view.atcid),
            0,
            view.cargo};
}

bool isSame(const LiveryView& a, const LiveryView& b) {
    return a.airl == b.airl && a.type == b.type && a.title == b.title && a.atcid == b.atcid && a.cargo == b.cargo;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const MemoryFolder folder("fuzz_liveries_scanned");
    const WorkingDirectory here(folder.file("."));
    std::filesystem::create_directories("output");
    writeInput(scannedLiveriesFile, data, size);
    const std::optional<ScannedLiveries> first = read();
    if (!first) {
        return 0;
    }
    Liveries.clear();
    std::transform(first->liveries.begin(), first->liveries.end(), std::back_inserter(Liveries), liveryOf);
    lf_writeLiveries();
    const std::optional<ScannedLiveries> again = read();
    require(again.has_value());
    require(std::equal(first->liveries.begin(), first->liveries.end(), again->liveries.begin(), again->liveries.end(),
                       isSame));
    return 0;
}
