// fuzz/fuzz_liveries_scanned.cpp
// LiveriesScanned.xml: it is refused with one of its errors and leaves nothing, or it is read, and reads the same again when
// written anew.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <utility>

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

bool read() {
    try {
        lf_readLiveries();
        return true;
    } catch (const kvd::UserErrorException& error) {
        require(error.code() == 51 || error.code() == 52 || error.code() == 999);
        require(Liveries.empty());
        return false;
    }
}

bool isSame(const Livery& a, const Livery& b) {
    return a.airl == b.airl && a.type == b.type && a.title == b.title && a.atcid == b.atcid && a.cargo == b.cargo &&
           a.scan == 0 && b.scan == 0;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const MemoryFolder folder("fuzz_liveries_scanned");
    const WorkingDirectory here(folder.file("."));
    std::filesystem::create_directories("output");
    writeInput(scannedLiveriesFile, data, size);
    Liveries.clear();
    if (!read()) {
        return 0;
    }
    const std::list<Livery> first = Liveries;
    lf_writeLiveries();
    Liveries.clear();
    require(read());
    require(std::equal(first.begin(), first.end(), Liveries.begin(), Liveries.end(), isSame));
    return 0;
}
