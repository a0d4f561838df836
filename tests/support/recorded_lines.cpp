// tests/support/recorded_lines.cpp
#include "tests/support/recorded_lines.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <memory>
#include <string_view>

#ifdef TARNWING_HAS_ZLIB
#include <zlib.h>
#endif

namespace {

const std::filesystem::path startFolder = std::filesystem::current_path();

std::string unzipped(const std::filesystem::path& path) {
    std::string text;
#ifdef TARNWING_HAS_ZLIB
    const std::unique_ptr<gzFile_s, int (*)(gzFile)> file(gzopen(path.string().c_str(), "rb"), gzclose);
    std::array<char, 65536> block{};
    while (file) {
        const int length = gzread(file.get(), block.data(), static_cast<unsigned>(block.size()));
        if (length <= 0) {
            break;
        }
        text.append(block.data(), static_cast<std::size_t>(length));
    }
#else
    (void)path;
#endif
    return text;
}

} // namespace

std::string recordedText(std::string_view name) {
    return unzipped(startFolder / "../shared/data/traffic" / name);
}

std::vector<std::string> linesOf(std::string_view text) {
    std::vector<std::string> lines;
    while (!text.empty()) {
        const std::string_view line = text.substr(0, text.find('\n'));
        lines.emplace_back(line);
        text.remove_prefix(std::min(line.size() + 1, text.size()));
    }
    return lines;
}

std::vector<std::string> recordedTrafficLines() {
    return linesOf(recordedText("eham_2022-10-28.rttfc.csv.gz"));
}
