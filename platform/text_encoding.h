// platform/text_encoding.h
// Text is UTF-8 inside the program; this is where other forms come in and go out. Usable from any thread.
#pragma once

#include <string>
#include <string_view>

namespace platform {

/// Throws std::runtime_error "utf8_to_wide: invalid UTF-8".
std::u16string utf16FromUtf8(std::string_view text);

/// Throws std::runtime_error "wide_to_utf8: invalid UTF-16" at a lone surrogate.
std::string utf8FromUtf16(std::u16string_view text);

/// Valid UTF-8 from any bytes or units: each that is part of no character becomes U+FFFD.
std::string repairedUtf8(std::string_view bytes);
std::string repairedUtf8(std::u16string_view units);

/// Whether the bytes are valid UTF-8 throughout; overlong forms, surrogates and values above U+10FFFF are not.
bool isValidUtf8(std::string_view bytes);

/// Bytes in the system's code page (natively always the western European one, 1252) as UTF-8. Every byte has a meaning.
std::string utf8FromCodePage(std::string_view bytes);

/// Text of unknown origin, such as the system's own error texts, as valid UTF-8: what is that already stays (a file
/// name), any other byte is read in the system's code page (the words around it).
std::string readableText(std::string_view bytes);

} // namespace platform
