// tools/files.cpp
#include "tools/files.h"

#include <array>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <system_error>

#include <zlib.h>

#include "platform/files.h"
#include "platform/text_encoding.h"

namespace fs = std::filesystem;

std::string wholeFile(const fs::path& path) {
    const std::unique_ptr<gzFile_s, int (*)(gzFile)> file(gzopen(platform::utf8FromPath(path).c_str(), "rb"), gzclose);
    if (!file) {
        throw std::runtime_error("cannot read " + platform::utf8FromPath(path));
    }
    std::string text;
    std::array<char, 65536> block{};
    int length = 0;
    while ((length = gzread(file.get(), block.data(), static_cast<unsigned>(block.size()))) > 0) {
        text.append(block.data(), static_cast<std::size_t>(length));
    }
    if (length < 0) {
        throw std::runtime_error("cannot read " + platform::utf8FromPath(path));
    }
    return text;
}

void writeWhole(const fs::path& path, const std::function<void(const fs::path&)>& write) {
    fs::path side = path;
    side += ".part";
    try {
        write(side);
        if (const std::error_code error = platform::replaceFile(side, path)) {
            throw std::runtime_error("cannot write " + platform::utf8FromPath(path) + ": " +
                                     platform::readableText(error.message()));
        }
    } catch (...) {
        std::error_code ignored;
        fs::remove(side, ignored);
        throw;
    }
}

void writeText(const fs::path& path, std::string_view text) {
    writeWhole(path, [text](const fs::path& side) {
        std::ofstream file(side, std::ios::binary);
        file.write(text.data(), static_cast<std::streamsize>(text.size()));
        file.close();
        if (!file) {
            throw std::runtime_error("cannot write " + platform::utf8FromPath(side));
        }
    });
}

DataKey keyOfFile(const fs::path& path) {
    if (path.empty()) {
        return gf_dataKey();
    }
    std::string text = wholeFile(path);
    text.erase(text.find_last_not_of("\r\n") + 1);
    if (const auto key = parseDataKey(text)) {
        return *key;
    }
    throw std::runtime_error(platform::utf8FromPath(path) + " holds no key: 32 characters or 64 hexadecimal digits");
}
