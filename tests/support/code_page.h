// tests/support/code_page.h
// The system's code page, on which the letters of bytes that are no UTF-8 depend.
#pragma once

#include "platform/text_encoding.h"

/// Whether it is the western European one (1252), by two letters that only this page has at their places.
inline bool isCodePageWestern() {
    return platform::utf8FromCodePage("\xFE\x8E") == "\u00FE\u017D";
}
