// fuzz/fuzz_container.cpp
// A container: whatever it holds, it opens or is refused; what it opens to is never longer than itself, and what is
// sealed from the same bytes opens to them again.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "distribution/sealed_file.h"
#include "fuzz/memory_folder.h"

namespace {

void require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

std::string contentOf(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const MemoryFolder folder("fuzz_container");
    const auto given = folder.file("given");
    const auto sealed = folder.file("sealed");
    const auto opened = folder.file("opened");
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    writeInput(given, data, size);

    const bool isWhole = gf_isWholeContainer(given, gf_dataKey());
    const bool opens = gf_streamDecrypt(given, opened);
    require(opens || !isWhole);
    require(!opens || contentOf(opened).size() < size);

    lf_streamSealFile(given, sealed, gf_dataKey());
    require(gf_isWholeContainer(sealed, gf_dataKey()));
    require(gf_streamDecrypt(sealed, opened) && contentOf(opened) == bytes);
    return 0;
}
