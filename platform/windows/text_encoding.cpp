// platform/windows/text_encoding.cpp
#include "platform/text_encoding.h"

#include <windows.h>

#include "platform/windows/wide_text.h"

namespace platform {

std::wstring wideFromUtf8(std::string_view text) {
    const std::u16string wide = utf16FromUtf8(text);
    return {wide.begin(), wide.end()};
}

std::string utf8FromWide(std::wstring_view text) {
    return utf8FromUtf16(std::u16string(text.begin(), text.end()));
}

std::string utf8FromCodePage(std::string_view bytes) {
    const int size = static_cast<int>(bytes.size());
    std::wstring wide(static_cast<std::size_t>(MultiByteToWideChar(CP_ACP, 0, bytes.data(), size, nullptr, 0)), L'\0');
    MultiByteToWideChar(CP_ACP, 0, bytes.data(), size, wide.data(), static_cast<int>(wide.size()));
    return utf8FromWide(wide);
}

} // namespace platform
