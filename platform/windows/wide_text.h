// platform/windows/wide_text.h
// UTF-8 to and from the wide text of the system calls; for the Windows half alone.
#pragma once

#include <string>
#include <string_view>

namespace platform {

/// Throws as utf16FromUtf8 does.
std::wstring wideFromUtf8(std::string_view text);

/// Throws as utf8FromUtf16 does.
std::string utf8FromWide(std::wstring_view text);

} // namespace platform
