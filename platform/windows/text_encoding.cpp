// platform/windows/text_encoding.cpp
#include "platform/text_encoding.h"

#include <climits>
#include <stdexcept>

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

namespace {

/// Bytes that are no UTF-8 were never meant in it, even where the user has made it the system's code page.
UINT codePage() {
    constexpr UINT westernEuropean = 1252;
    const UINT system = GetACP();
    return system == CP_UTF8 ? westernEuropean : system;
}

} // namespace

std::string utf8FromCodePage(std::string_view bytes) {
    if (bytes.empty()) {
        return {};
    }
    if (bytes.size() > static_cast<std::size_t>(INT_MAX)) {
        throw std::runtime_error("text too long for the system's conversion");
    }
    const int size = static_cast<int>(bytes.size());
    const int needed = MultiByteToWideChar(codePage(), 0, bytes.data(), size, nullptr, 0);
    if (needed <= 0) {
        throw std::runtime_error("the system cannot convert the text");
    }
    std::wstring wide(static_cast<std::size_t>(needed), L'\0');
    MultiByteToWideChar(codePage(), 0, bytes.data(), size, wide.data(), needed);
    return utf8FromWide(wide);
}

} // namespace platform
