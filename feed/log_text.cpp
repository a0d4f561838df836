// feed/log_text.cpp
#include "feed/log_text.h"

#include <algorithm>

#include "platform/text_encoding.h"

std::string asLogText(std::string_view text) {
    const bool validUtf8 = platform::isValidUtf8(text);
    std::string result(text);
    std::replace_if(
        result.begin(), result.end(),
        [validUtf8](char c) {
            const auto byte = static_cast<unsigned char>(c);
            const bool isControl = byte < 0x20 || byte == 0x7F;
            return isControl || (byte >= 0x80 && !validUtf8);
        },
        '?');
    return result;
}
