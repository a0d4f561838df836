// platform/posix/text_encoding.cpp
#include "platform/text_encoding.h"

namespace platform {

namespace {

/// Code page 1252 from 0x80 to 0x9F; its five unassigned bytes keep their number, as the Windows conversion has them.
constexpr char16_t westernBlock[] = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178,
};

} // namespace

std::string utf8FromCodePage(std::string_view bytes) {
    std::u16string text;
    text.reserve(bytes.size());
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        text += byte >= 0x80 && byte < 0xA0 ? westernBlock[byte - 0x80] : static_cast<char16_t>(byte);
    }
    return utf8FromUtf16(text);
}

} // namespace platform
