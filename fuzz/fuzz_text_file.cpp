// fuzz/fuzz_text_file.cpp
// Text files in every charset: the lines are valid UTF-8 without line ends, whatever the bytes and the charset.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "core/text_files.h"
#include "platform/text_encoding.h"

namespace {

void require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

void checkLines(Charset charset, std::string_view bytes) {
    for (const std::string& line : linesOf(charset, bytes)) {
        require(platform::isValidUtf8(line));
        require(line.find('\n') == std::string::npos);
        require(!line.ends_with('\r'));
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    for (const Charset charset : {Charset::ANSI, Charset::Unicode, Charset::Unicode_big_endian, Charset::UTF8_with_BOM,
                                  Charset::UTF8_without_BOM, Charset::none_found}) {
        checkLines(charset, bytes);
    }
    const bool isText = charsetOf(bytes) != Charset::none_found;
    require(isText || linesOf(charsetOf(bytes), bytes).empty());
    return 0;
}
